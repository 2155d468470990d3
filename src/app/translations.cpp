#include "app/translations.h"

#include <QGuiApplication>
#include <QLibraryInfo>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// Which of the two ways of writing is meant by "zh", "zh-CN", "zh-Hant-HK" and the like.
bool isSimplified(const QString& language)
{
    const QStringList parts = language.split(u'-');
    if (parts.contains(u"Hans"_s) || parts.contains(u"Hant"_s))
        return parts.contains(u"Hans"_s);
    return QLocale(language).script() == QLocale::SimplifiedHanScript;
}

} // namespace

std::optional<QString> translationFor(const QStringList& languages)
{
    bool readsTraditional = false;
    for (const QString& name : languages) {
        const QLocale language(name);
        switch (language.language()) {
        case QLocale::C:
        case QLocale::English:
            return std::nullopt;
        case QLocale::Arabic:
            return u"ar"_s;
        case QLocale::German:
            return u"de"_s;
        case QLocale::Spanish:
            return u"es"_s;
        case QLocale::French:
            return u"fr"_s;
        case QLocale::Chinese:
            // The bare "zh" that ends the list of a user of "zh-TW" means no more than that.
            if (isSimplified(name) && !readsTraditional)
                return u"zh_CN"_s;
            readsTraditional = true;
            break;
        default:
            break;
        }
    }
    return std::nullopt;
}

Translations::Translations(const QStringList& languages)
{
    const auto translation = translationFor(languages);
    if (!translation || !m_translator.load(u":/i18n/orvanta-focus_%1.qm"_s.arg(*translation)))
        return;
    // Where Qt's own are not installed, its words stay English.
    if (m_qtTranslator.load(u"qtbase_%1"_s.arg(*translation), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_qtTranslator);
    QCoreApplication::installTranslator(&m_translator);
    QGuiApplication::setLayoutDirection(QLocale(*translation).textDirection());
}

Translations::~Translations()
{
    QCoreApplication::removeTranslator(&m_translator);
    QCoreApplication::removeTranslator(&m_qtTranslator);
}

} // namespace orvanta
