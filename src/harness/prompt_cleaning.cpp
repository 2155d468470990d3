#include "harness/prompt_cleaning.h"

#include <QTextBoundaryFinder>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

bool isPartOfWord(const QString& text, qsizetype place)
{
    if (place >= text.size())
        return false;
    char32_t character = text[place].unicode();
    if (text[place].isHighSurrogate() && place + 1 < text.size() && text[place + 1].isLowSurrogate())
        character = QChar::surrogateToUcs4(text[place], text[place + 1]);
    return QChar::isLetterOrNumber(character) || character == U'_';
}

QString withoutBrowserContexts(const QString& text)
{
    const QStringView opening = u"<in-app-browser-context";
    const QStringView closing = u"</in-app-browser-context>";
    QString rest;
    qsizetype kept = 0; // everything before has been dealt with
    qsizetype place = 0;
    while (true) {
        const qsizetype begin = text.indexOf(opening, place);
        if (begin < 0)
            break;
        place = begin + opening.size();
        if (isPartOfWord(text, place))
            continue;
        const qsizetype tagEnd = text.indexOf(u'>', place);
        const qsizetype end = tagEnd < 0 ? -1 : text.indexOf(closing, tagEnd + 1);
        if (end < 0)
            break; // and no later opening can have an end either
        rest += QStringView(text).sliced(kept, begin - kept);
        place = kept = end + closing.size();
    }
    return kept == 0 ? text : rest.append(QStringView(text).sliced(kept));
}

/// Whether a line begins at `place`: at the beginning, or after a line's end, of which CR LF is one.
bool beginsLine(const QString& text, qsizetype place)
{
    if (place == 0)
        return true;
    switch (text[place - 1].unicode()) {
    case u'\r':
        return place == text.size() || text[place] != u'\n';
    case u'\n':
    case u'\v':
    case u'\f':
    case u'\u0085':
    case u'\u2028':
    case u'\u2029':
        return true;
    default:
        return false;
    }
}

QString withoutRequestHeadings(const QString& text)
{
    const QStringView marker = u"## ";
    const QStringView heading = u"## My request for Codex:";
    QString rest;
    qsizetype kept = 0;
    qsizetype place = 0;
    while (true) {
        const qsizetype found = text.indexOf(marker, place);
        if (found < 0)
            break;
        place = found + 1;
        if (!QStringView(text).sliced(found).startsWith(heading, Qt::CaseInsensitive))
            continue;
        // The match begins at the earliest line of the white space before the heading.
        qsizetype begin = found;
        while (begin > kept && text[begin - 1].isSpace())
            --begin;
        while (begin < found && !beginsLine(text, begin))
            ++begin;
        if (!beginsLine(text, begin))
            continue;
        qsizetype end = found + heading.size();
        while (end < text.size() && text[end].isSpace())
            ++end;
        rest += QStringView(text).sliced(kept, begin - kept);
        place = kept = end;
    }
    return kept == 0 ? text : rest.append(QStringView(text).sliced(kept));
}

} // namespace

QString cleanedPrompt(const QString& text)
{
    return withoutRequestHeadings(withoutBrowserContexts(text)).trimmed();
}

QString firstCharacters(const QString& text, int limit)
{
    if (text.size() <= limit)
        return text;
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
    for (int count = 0; count < limit; ++count) {
        if (characters.toNextBoundary() < 0)
            return text;
    }
    return text.first(characters.position());
}

} // namespace orvanta
