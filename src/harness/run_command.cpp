#include "harness/run_command.h"

#include "harness/doctor.h"
#include "harness/end_signals.h"
#include "harness/harness_session.h"
#include "service/authorities.h"
#include "service/focus_credential_store.h"
#include "service/network_url_session.h"

#include <QCoreApplication>

#include <cstdio>
#include <tuple>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

/// How long the end waits for what is still to be uploaded.
constexpr std::chrono::seconds lastChance { 3 };

void report(const QString& line)
{
    std::fprintf(stderr, "orvanta-harness: %s\n", qUtf8Printable(line));
}

/// Notes for `doctor` what becomes of its events.
void followDoctorsEvents(HarnessSession& session, FileSystem& files, const QString& runtimeFolder)
{
    const auto note = [&files, path = doctorNotePath(runtimeFolder)](const HarnessLifecycleEvent& event, const std::optional<QString>& outcome) {
        // A note that cannot be written is missed by doctor alone, and then said by it.
        if (event.sessionId == doctorSession)
            std::ignore = files.writeAtomically(path, encodeDoctorNote({ event.eventId, outcome }));
    };
    QObject::connect(&session, &HarnessSession::received, &session, [note](const HarnessLifecycleEvent& event) { note(event, std::nullopt); });
    QObject::connect(&session.uploader(), &SessionEventUploader::tried, &session,
        [note](const HarnessLifecycleEvent& event, const std::optional<QString>& failure) { note(event, failure.value_or(QString())); });
}

/// Receives no more, and ends the event loop once everything has been uploaded, or its time is over.
void endSoon(HarnessSession& session)
{
    session.stopReceiving();
    // What was received is decoded first.
    QTimer::singleShot(0, &session, [&session] {
        const auto endIfDone = [&session] {
            if (session.uploader().waiting() == 0 || session.uploader().isPausing())
                QCoreApplication::exit();
        };
        QObject::connect(&session.uploader(), &SessionEventUploader::tried, &session, endIfDone, Qt::QueuedConnection);
        QTimer::singleShot(lastChance, qApp, &QCoreApplication::quit);
        endIfDone();
    });
}

} // namespace

HarnessExit runHarness(const ServiceConfiguration& service, SecretStore& secrets, FileSystem& files, const QString& runtimeFolder)
{
    const auto key = FocusCredentialStore(secrets).readAPIKey();
    if (!key) {
        report(FocusAPIError::missingCredential().description());
        return HarnessExit::noAPIKey;
    }
    NetworkUrlSession urlSession(additionalAuthorities);
    HarnessSession session(FocusAPIClient(urlSession, service.origin, *key), files, &report, {});
    QObject::connect(&session, &HarnessSession::listening, &session, [&session] {
        std::printf("Listening on 127.0.0.1:%u\n", unsigned { session.port() });
        std::fflush(stdout);
    });
    followDoctorsEvents(session, files, runtimeFolder);
    EndSignals signals_;
    QObject::connect(&signals_, &EndSignals::asked, &session, [&session] { endSoon(session); }, Qt::SingleShotConnection);
    session.start();
    QCoreApplication::exec();
    if (const std::size_t waiting = session.uploader().waiting(); waiting > 0)
        report(u"%1 events did not reach the service"_s.arg(waiting));
    return HarnessExit::ok;
}

} // namespace orvanta
