#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>
#include <QTranslator>

#include <optional>

namespace orvanta {

/// The translation to use for a user who wants to read these languages, the first one best: its name, as in the names of
/// the files. Absent if the program's own English comes first, or if there is none of them. Simplified Chinese is not
/// offered to those who read the traditional one.
[[nodiscard]] std::optional<QString> translationFor(const QStringList& languages);

/// The program's words in the user's language, where there is a translation, and the direction in which that is written;
/// with them Qt's own, which say why the service could not be reached. Made right after the application object; the words
/// go with it.
class Translations {
public:
    explicit Translations(const QStringList& languages = QLocale().uiLanguages());
    ~Translations();

    Translations(const Translations&) = delete;
    Translations& operator=(const Translations&) = delete;

private:
    QTranslator m_qtTranslator;
    QTranslator m_translator;
};

} // namespace orvanta
