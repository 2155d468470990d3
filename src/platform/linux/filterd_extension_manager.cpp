#include "platform/linux/filterd_extension_manager.h"

#include "platform/linux/filterd_connection.h"
#include "platform/linux/installation.h"

#include <QCoreApplication>
#include <QDBusArgument>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

void finishActivation(ActivationEvents& events, const QDBusMessage& answer)
{
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) {
        events.failed(Filterd::errorOf(answer));
        return;
    }
    const bool afterReboot = answer.arguments().constFirst().toUInt() == static_cast<uint>(ActivationResult::willCompleteAfterReboot);
    events.finished(afterReboot ? ActivationResult::willCompleteAfterReboot : ActivationResult::completed);
}

} // namespace

void FilterdExtensionManager::requestProperties(
    const QString& identifier, Callback<std::vector<ExtensionProperties>> found, Callback<PlatformError> failed)
{
    const auto start = m_wasThere ? Filterd::Start::never : Filterd::Start::ifNeeded;
    Filterd::call(m_context, "QueryProperties"_L1, { identifier }, start, Filterd::Interaction::never,
        [this, found = std::move(found), failed = std::move(failed)](const QDBusMessage& answer) mutable {
            if (Filterd::isAbsent(answer)) {
                found({});
                return;
            }
            m_wasThere = true;
            const auto* enabled = answer.arguments().isEmpty() ? nullptr : &answer.arguments().constFirst();
            if (answer.type() != QDBusMessage::ReplyMessage || !enabled || !enabled->canConvert<QDBusArgument>()) {
                failed(Filterd::errorOf(answer));
                return;
            }
            std::vector<ExtensionProperties> properties;
            for (const bool isEnabled : qdbus_cast<QList<bool>>(*enabled))
                properties.push_back({ .isEnabled = isEnabled });
            found(std::move(properties));
        });
}

/// At first without a dialog: that polkit would have to ask is worth telling before it does.
void FilterdExtensionManager::activate(const QString& identifier, ActivationEvents events)
{
    auto shared = std::make_shared<ActivationEvents>(std::move(events));
    Filterd::call(m_context, "Activate"_L1, { identifier }, Filterd::Start::ifNeeded, Filterd::Interaction::never,
        [this, identifier, shared](const QDBusMessage& answer) {
            if (answer.type() != QDBusMessage::ErrorMessage || answer.errorName() != Filterd::approvalNeeded) {
                finishActivation(*shared, answer);
                return;
            }
            shared->needsUserApproval();
            Filterd::call(m_context, "Activate"_L1, { identifier }, Filterd::Start::ifNeeded, Filterd::Interaction::allowed,
                [shared](const QDBusMessage& approved) { finishActivation(*shared, approved); });
        });
}

QString FilterdExtensionManager::hostBundlePath()
{
    return installedBundlePath(QCoreApplication::applicationFilePath());
}

} // namespace orvanta
