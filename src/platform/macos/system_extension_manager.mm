#include "platform/macos/system_extension_manager.h"

#include "platform/macos/extension_request_delegate.h"
#include "platform/macos/foundation_values.h"

#include <algorithm>

namespace orvanta {

/// The system keeps no request's delegate: it is kept here until its request has ended.
class SystemExtensionManager::Requests : public std::enable_shared_from_this<Requests> {
public:
    void submit(OSSystemExtensionRequest* request, ExtensionRequestAnswers answers)
    {
        answers.ended = [requests = weak_from_this()](const void* delegate) {
            if (const auto kept = requests.lock())
                kept->drop(delegate);
        };
        ExtensionRequestDelegate* delegate = [[ExtensionRequestDelegate alloc] initWithAnswers:std::move(answers) hop:m_owner.hop()];
        m_delegates.push_back(delegate);
        request.delegate = delegate;
        [OSSystemExtensionManager.sharedManager submitRequest:request];
    }

private:
    void drop(const void* ended)
    {
        std::erase_if(m_delegates, [ended](ExtensionRequestDelegate* delegate) { return (__bridge const void*)delegate == ended; });
    }

    MainQueueOwner m_owner;
    std::vector<ExtensionRequestDelegate*> m_delegates;
};

SystemExtensionManager::SystemExtensionManager() : m_requests(std::make_shared<Requests>()) { }

SystemExtensionManager::~SystemExtensionManager() = default;

void SystemExtensionManager::requestProperties(
    const QString& identifier, Callback<std::vector<ExtensionProperties>> found, Callback<PlatformError> failed)
{
    @autoreleasepool {
        OSSystemExtensionRequest* request = [OSSystemExtensionRequest propertiesRequestForExtension:toNSString(identifier)
                                                                                              queue:dispatch_get_main_queue()];
        m_requests->submit(request, { .found = std::move(found), .failed = std::move(failed) });
    }
}

void SystemExtensionManager::activate(const QString& identifier, ActivationEvents events)
{
    @autoreleasepool {
        OSSystemExtensionRequest* request = [OSSystemExtensionRequest activationRequestForExtension:toNSString(identifier)
                                                                                              queue:dispatch_get_main_queue()];
        m_requests->submit(request,
            { .replacing = std::move(events.replacing),
                .needsUserApproval = std::move(events.needsUserApproval),
                .finished = std::move(events.finished),
                .failed = std::move(events.failed) });
    }
}

QString SystemExtensionManager::hostBundlePath()
{
    @autoreleasepool {
        return toQString(NSBundle.mainBundle.bundleURL.path);
    }
}

} // namespace orvanta
