#pragma once

#include "platform/extension_manager.h"
#include "platform/macos/main_queue.h"

#import <SystemExtensions/SystemExtensions.h>

namespace orvanta {

/// Who waits for what becomes of one request; what a request of its kind is not asked stays empty.
struct ExtensionRequestAnswers {
    decltype(ActivationEvents::replacing) replacing {};
    Callback<> needsUserApproval {};
    Callback<ActivationResult> finished {};
    Callback<std::vector<ExtensionProperties>> found {};
    Callback<PlatformError> failed {};
    Callback<const void*> ended {}; ///< with the delegate's address, before the last of the others
};

} // namespace orvanta

/// The delegate of one request. Answers on the main queue, and nothing after the request has ended.
@interface ExtensionRequestDelegate : NSObject <OSSystemExtensionRequestDelegate> {
    std::shared_ptr<orvanta::ExtensionRequestAnswers> m_answers;
    std::unique_ptr<const orvanta::MainQueueOwner::Hop> m_hop;
}

- (instancetype)initWithAnswers:(orvanta::ExtensionRequestAnswers)answers hop:(orvanta::MainQueueOwner::Hop)hop;

@end
