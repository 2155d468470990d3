#include "platform/macos/extension_request_delegate.h"

#include "platform/macos/foundation_values.h"

using namespace orvanta;

namespace {

/// Calls one of the answers, if it is there, and none after it.
template <typename Answer, typename... Value>
void finish(const std::shared_ptr<ExtensionRequestAnswers>& answers, const void* delegate, Answer ExtensionRequestAnswers::* which, Value... value)
{
    if (!answers->ended)
        return;
    std::exchange(answers->ended, nullptr)(delegate);
    if (auto answer = std::exchange((*answers).*which, nullptr))
        answer(std::move(value)...);
}

} // namespace

@implementation ExtensionRequestDelegate

- (instancetype)initWithAnswers:(ExtensionRequestAnswers)answers hop:(MainQueueOwner::Hop)hop
{
    self = [super init];
    if (self) {
        m_answers = std::make_shared<ExtensionRequestAnswers>(std::move(answers));
        m_hop = std::make_unique<const MainQueueOwner::Hop>(std::move(hop));
    }
    return self;
}

- (OSSystemExtensionReplacementAction)request:(OSSystemExtensionRequest*)request
                  actionForReplacingExtension:(OSSystemExtensionProperties*)existing
                                withExtension:(OSSystemExtensionProperties*)extension
{
    const bool isReplaced = m_answers->replacing && m_answers->replacing() == ReplacementAction::replace;
    return isReplaced ? OSSystemExtensionReplacementActionReplace : OSSystemExtensionReplacementActionCancel;
}

- (void)requestNeedsUserApproval:(OSSystemExtensionRequest*)request
{
    (*m_hop)([answers = m_answers] {
        if (answers->needsUserApproval)
            answers->needsUserApproval();
    });
}

- (void)request:(OSSystemExtensionRequest*)request didFinishWithResult:(OSSystemExtensionRequestResult)result
{
    const bool isAfterReboot = result == OSSystemExtensionRequestWillCompleteAfterReboot;
    (*m_hop)([answers = m_answers, delegate = (__bridge const void*)self, isAfterReboot] {
        finish(answers, delegate, &ExtensionRequestAnswers::finished,
            isAfterReboot ? ActivationResult::willCompleteAfterReboot : ActivationResult::completed);
    });
}

- (void)request:(OSSystemExtensionRequest*)request didFailWithError:(NSError*)error
{
    (*m_hop)([answers = m_answers, delegate = (__bridge const void*)self, failure = toPlatformError(error)] {
        finish(answers, delegate, &ExtensionRequestAnswers::failed, failure);
    });
}

- (void)request:(OSSystemExtensionRequest*)request foundProperties:(NSArray<OSSystemExtensionProperties*>*)properties
{
    std::vector<ExtensionProperties> found;
    for (OSSystemExtensionProperties* version in properties)
        found.push_back({ .isEnabled = static_cast<bool>(version.isEnabled) });
    (*m_hop)([answers = m_answers, delegate = (__bridge const void*)self, found = std::move(found)] {
        finish(answers, delegate, &ExtensionRequestAnswers::found, found);
    });
}

@end
