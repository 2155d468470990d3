#include "localservice/serve.h"

#include "localservice/api_routes.h"
#include "localservice/data_folder.h"
#include "localservice/http_server.h"
#include "localservice/key_file.h"
#include "localservice/page_routes.h"
#include "localservice/schema.h"
#include "localservice/termination_signals.h"
#include "localservice/tls_identity.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>

#include <iostream>
#include <iterator>

namespace orvanta::localservice {

using namespace Qt::StringLiterals;

namespace {

ExitStatus failed(const QString& line)
{
    report(line);
    return ExitStatus::failed;
}

std::vector<Route> allRoutes(Database& database, const QByteArray& key, const QStringList& names)
{
    auto routes = apiRoutes(database, key);
    auto pages = pageRoutes(database, key, names);
    std::ranges::move(pages, std::back_inserter(routes));
    return routes;
}

bool writeReadyFile(const QString& path, const QString& origin)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(origin.toUtf8() + '\n') >= 0 && file.commit();
}

/// Everything that stands between the arguments and a listening server, opened in the order in which it can fail.
struct Opened {
    FolderLock lock;
    QByteArray key;
    Database database;
    std::optional<TlsIdentity> identity;
};

std::expected<Opened, QString> openEverything(const ServeCommand& command, const QString& dataFolder)
{
    auto folderNotice = prepareDataFolder(dataFolder);
    if (!folderNotice)
        return std::unexpected(folderNotice.error());
    reportNotice(*folderNotice);
    auto lock = FolderLock::take(dataFolder);
    if (!lock)
        return std::unexpected(lock.error());

    std::optional<TlsIdentity> identity;
    if (command.tls) {
        auto read = readTlsIdentity(command.tls->certificateFile, command.tls->privateKeyFile);
        if (!read)
            return std::unexpected(read.error());
        identity = *std::move(read);
    }

    auto key = readOrMakeApiKey(keyFilePath(dataFolder));
    if (!key)
        return std::unexpected(key.error());
    reportNotice(key->notice);

    auto opened = openServiceDatabase(dataFolder, DamageRule::moveAside);
    if (!opened)
        return std::unexpected(u"%1: %2"_s.arg(databasePath(dataFolder), opened.error().description));
    const std::optional<QString>& damagedCopy = opened->damagedCopy;
    if (damagedCopy)
        report(u"The database was damaged. It is kept as %1, and the service begins with an empty one"_s.arg(*damagedCopy));
    return Opened { *std::move(lock), key->text, std::move(opened->database), std::move(identity) };
}

} // namespace

ExitStatus runServe(const ServeCommand& command, const QString& dataFolder)
{
    const TerminationSignals signalsToEnd;
    QObject::connect(&signalsToEnd, &TerminationSignals::received, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    if (command.readyFile)
        QFile::remove(*command.readyFile);

    auto opened = openEverything(command, dataFolder);
    if (!opened)
        return failed(opened.error());

    const std::optional<TlsIdentity>& identity = opened->identity;
    Router router(allRoutes(opened->database, opened->key, identity ? identity->names : QStringList()));
    HttpServer server(router);
    const auto encryption = identity ? std::optional(identity->encryption) : std::nullopt;
    if (const auto listening = server.listen(command.address, command.port, encryption); !listening)
        return failed(listening.error());
    if (!command.address.isLoopback() && !encryption)
        report(u"Other machines can reach this service, and the key travels to it unencrypted; consider --certificate"_s);

    std::cout << "Listening on " << server.origin().toStdString() << std::endl;
    if (command.readyFile && !writeReadyFile(*command.readyFile, server.origin()))
        return failed(u"The ready file %1 cannot be written"_s.arg(*command.readyFile));
    QCoreApplication::exec();
    if (command.readyFile)
        QFile::remove(*command.readyFile);
    return ExitStatus::ok;
}

} // namespace orvanta::localservice
