#pragma once

#include "localservice/iso_time.h"
#include "localservice/schema.h"

#include <QTemporaryDir>

/// A database of the service in a folder that goes with it.
class ScratchDatabase {
public:
    ScratchDatabase() : m_opened(openServiceDatabaseOrStop()) { }

    orvanta::localservice::Database& database() { return m_opened.database; }
    [[nodiscard]] QString folder() const { return m_folder.path(); }

private:
    orvanta::localservice::OpenedDatabase openServiceDatabaseOrStop()
    {
        auto opened = openServiceDatabase(m_folder.path(), orvanta::localservice::DamageRule::report);
        if (!opened)
            qFatal("%s", qPrintable(opened.error().description));
        return *std::move(opened);
    }

    QTemporaryDir m_folder;
    orvanta::localservice::OpenedDatabase m_opened;
};

inline orvanta::localservice::UtcTime at(const char* iso)
{
    const auto time = orvanta::localservice::utcTimeFromIso(iso);
    if (!time)
        qFatal("%s is no time", iso);
    return *time;
}
