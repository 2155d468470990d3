#include "platform/portable/json_object_file.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <tuple>
#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// How long another copy of the program may keep the file from us. Writing it takes milliseconds; a copy that was
/// stopped in the middle must not stop this one with it.
constexpr auto lockPatience = std::chrono::seconds(2);

/// How long content that is not understood is left to whoever may be writing it.
constexpr auto writersPause = std::chrono::seconds(2);

} // namespace

JsonObjectFile::JsonObjectFile(QString path, QString lockPath, FilePermissions permissions)
    : m_path(std::move(path))
    , m_lockPath(std::move(lockPath))
    , m_permissions(permissions)
{
    read();
    m_hasNews = false;
}

JsonObjectFile::State JsonObjectFile::read()
{
    const auto found = readWholeFile(m_path, storedObjectLimit);
    if (!found) {
        m_trouble = found.error().description;
        return m_state = found.error().mayPass ? State::unreadable : State::notUnderstood;
    }
    const std::optional<QByteArray>& content = *found;
    if (!content)
        return m_state = State::absent;
    if (*content == m_object.text())
        return m_state = State::understood;
    auto object = parseStoredObject(*content);
    if (!object) {
        m_trouble = object.error().description;
        return m_state = State::notUnderstood;
    }
    if (!object->holdsTheSameAs(m_object))
        m_hasNews = true;
    m_object = std::move(*object);
    return m_state = State::understood;
}

Result<void> JsonObjectFile::setValue(const QString& key, const StoredValue& value)
{
    if (std::holds_alternative<ForeignValue>(value))
        return std::unexpected(notSaved(u"a value of a foreign type"_s));
    return change([&](StoredObject& object) { return object.set(key, value); });
}

Result<void> JsonObjectFile::remove(const QString& key)
{
    return change([&](StoredObject& object) {
        object.remove(key);
        return true;
    });
}

Result<FileLock> JsonObjectFile::lock() const
{
    for (const QString& folder : { QFileInfo(m_path).absolutePath(), QFileInfo(m_lockPath).absolutePath() }) {
        if (const auto made = makePrivateFolder(folder); !made)
            return std::unexpected(made.error());
    }
    return FileLock::acquire(m_lockPath, lockPatience);
}

Result<void> JsonObjectFile::change(const Edit& edit)
{
    const auto locked = lock();
    if (!locked)
        return std::unexpected(notSaved(locked.error().description));

    StoredObject before = m_object;
    const bool hadNews = takeNews();
    read();
    const bool broughtNews = m_hasNews;
    m_hasNews = hadNews || broughtNews;
    if (m_state == State::unreadable)
        return std::unexpected(PlatformError { QCoreApplication::translate("StoredFile", "%1 could not be saved: it %2").arg(m_path, m_trouble) });
    if (m_state == State::notUnderstood) {
        if (wasChangedJustNow())
            return std::unexpected(
                PlatformError { QCoreApplication::translate("StoredFile", "%1 %2; it was changed just now, so nothing is saved in its place yet")
                        .arg(m_path, m_trouble) });
        if (const auto moved = moveAsideLocked(); !moved)
            return moved;
    }

    StoredObject next = m_object;
    if (!edit(next))
        return std::unexpected(notSaved(u"a value of a foreign type"_s));
    const bool fileHoldsIt = m_state == State::understood || next.text() == StoredObject().text();
    if (next.text() != m_object.text() || !fileHoldsIt) {
        if (const auto written = write(next); !written)
            return written;
    }
    if (broughtNews && !hadNews) {
        // What came in and is overwritten at once is no news to anyone.
        edit(before);
        m_hasNews = !before.holdsTheSameAs(next);
    }
    m_object = std::move(next);
    return {};
}

Result<void> JsonObjectFile::write(const StoredObject& object)
{
    if (object.text().size() > storedObjectLimit)
        return std::unexpected(
            notSaved(QCoreApplication::translate("StoredFile", "it would be larger than %1 MiB").arg(storedObjectLimit / (1024LL * 1024))));
    if (const auto replaced = replaceFile(m_path, object.text(), m_permissions); !replaced) {
        // Where only the very last step failed, the new content stands there without being safe yet. It is our own.
        const bool hadNews = m_hasNews;
        read();
        m_hasNews = hadNews;
        return std::unexpected(notSaved(replaced.error().description));
    }
    m_state = State::understood;
    return {};
}

void JsonObjectFile::moveAsideIfNotUnderstood()
{
    if (m_state == State::understood || m_state == State::absent)
        return;
    const auto locked = lock();
    if (!locked) {
        report(QCoreApplication::translate("StoredFile", "%1 %2, and it could not be moved aside: %3")
                .arg(m_path, m_trouble, locked.error().description));
        return;
    }
    // Another copy may have put it right while we waited.
    if (const State now = read(); now == State::notUnderstood || now == State::unreadable)
        std::ignore = moveAsideLocked();
}

/// A time to come is some other clock's, and says nothing.
bool JsonObjectFile::wasChangedJustNow() const
{
    const QDateTime changed = QFileInfo(m_path).lastModified();
    const qint64 age = changed.msecsTo(QDateTime::currentDateTime());
    return changed.isValid() && age >= 0 && std::chrono::milliseconds(age) < writersPause;
}

Result<void> JsonObjectFile::moveAsideLocked()
{
    const auto aside = moveAside(m_path);
    if (!aside) {
        const QString problem = QCoreApplication::translate("StoredFile", "%1 %2, and it could not be moved aside: %3")
                                    .arg(m_path, m_trouble, aside.error().description);
        report(problem);
        return std::unexpected(PlatformError { problem });
    }
    report(QCoreApplication::translate("StoredFile", "%1 %2; it was moved aside to %3").arg(m_path, m_trouble, *aside));
    m_state = State::absent;
    return {};
}

void JsonObjectFile::report(const QString& problem)
{
    m_problem = problem;
    QString line = problem;
    // A file's name may hold anything; the report stays one line, without anything that a terminal obeys.
    std::ranges::replace_if(line, [](QChar unit) { return unit.category() == QChar::Other_Control; }, u'?');
    std::fprintf(stderr, "orvanta-focus: %s\n", qPrintable(line));
}

PlatformError JsonObjectFile::notSaved(const QString& reason) const
{
    return { QCoreApplication::translate("StoredFile", "%1 could not be saved: %2").arg(m_path, reason) };
}

} // namespace orvanta
