#include "macos/gnustep/fakes/fake_system_extensions.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/object_state.h"
#include "platform/macos/foundation_values.h"

#include <deque>

#import <SystemExtensions/SystemExtensions.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

namespace {

enum class Kind { activation, properties };

struct Request {
    Kind kind = Kind::activation;
    QString identifier;
    id<OSSystemExtensionRequestDelegate> delegate = nil;
};

std::deque<OSSystemExtensionRequest*> activations;
std::deque<OSSystemExtensionRequest*> lookups;

const ResetAtBegin resetAtBegin([] {
    activations.clear();
    lookups.clear();
});

OSSystemExtensionRequest* take(std::deque<OSSystemExtensionRequest*>& requests)
{
    OSSystemExtensionRequest* oldest = requests.front();
    requests.pop_front();
    return oldest;
}

NSError* errorOf(const QString& description)
{
    return [NSError errorWithDomain:@"OSSystemExtensionErrorDomain"
                               code:4
                           userInfo:[NSDictionary dictionaryWithObject:toNSString(description) forKey:NSLocalizedDescriptionKey]];
}

OSSystemExtensionRequest* make(Class self, Kind kind, NSString* identifier, dispatch_queue_t queue)
{
    record(QStringLiteral("%1 request for %2 on %3")
            .arg(kind == Kind::activation ? QStringLiteral("activation") : QStringLiteral("properties"), toQString(identifier),
                queue == dispatch_get_main_queue() ? QStringLiteral("the main queue") : QStringLiteral("another queue")));
    OSSystemExtensionRequest* request = [[self alloc] init];
    stateOf<Request>(request) = { .kind = kind, .identifier = toQString(identifier), .delegate = nil };
    return request;
}

} // namespace

@implementation OSSystemExtensionProperties

- (BOOL)isEnabled
{
    return stateOf<ExtensionProperties>(self).isEnabled;
}

@end

@implementation OSSystemExtensionRequest

+ (instancetype)activationRequestForExtension:(NSString*)identifier queue:(dispatch_queue_t)queue
{
    return make(self, Kind::activation, identifier, queue);
}

+ (instancetype)propertiesRequestForExtension:(NSString*)identifier queue:(dispatch_queue_t)queue
{
    return make(self, Kind::properties, identifier, queue);
}

- (id<OSSystemExtensionRequestDelegate>)delegate
{
    return stateOf<Request>(self).delegate;
}

- (void)setDelegate:(id<OSSystemExtensionRequestDelegate>)delegate
{
    record(QStringLiteral("delegate set"));
    stateOf<Request>(self).delegate = delegate;
}

@end

@implementation OSSystemExtensionManager

+ (OSSystemExtensionManager*)sharedManager
{
    static OSSystemExtensionManager* manager = [[OSSystemExtensionManager alloc] init];
    return manager;
}

- (void)submitRequest:(OSSystemExtensionRequest*)request
{
    record(QStringLiteral("submitRequest"));
    (stateOf<Request>(request).kind == Kind::activation ? activations : lookups).push_back(request);
}

@end

namespace orvanta::testing::mac {

void findExtensions(const std::vector<ExtensionProperties>& properties)
{
    OSSystemExtensionRequest* request = take(lookups);
    onAnotherThread([&] {
        NSMutableArray* found = [NSMutableArray array];
        for (const ExtensionProperties& version : properties) {
            OSSystemExtensionProperties* object = [[OSSystemExtensionProperties alloc] init];
            stateOf<ExtensionProperties>(object) = version;
            [found addObject:object];
        }
        // As the system does: only who has the method is asked.
        if ([request.delegate respondsToSelector:@selector(request:foundProperties:)])
            [request.delegate request:request foundProperties:found];
        [request.delegate request:request didFinishWithResult:OSSystemExtensionRequestCompleted];
    });
}

void failExtensionProperties(const QString& description)
{
    OSSystemExtensionRequest* request = take(lookups);
    onAnotherThread([&] { [request.delegate request:request didFailWithError:errorOf(description)]; });
}

int askToReplaceExtension()
{
    @autoreleasepool {
        OSSystemExtensionRequest* request = activations.front();
        return static_cast<int>([request.delegate request:request
                              actionForReplacingExtension:[[[OSSystemExtensionProperties alloc] init] autorelease]
                                            withExtension:[[[OSSystemExtensionProperties alloc] init] autorelease]]);
    }
}

void askForExtensionApproval()
{
    OSSystemExtensionRequest* request = activations.front();
    onAnotherThread([&] { [request.delegate requestNeedsUserApproval:request]; });
}

void finishExtensionActivation(int result)
{
    OSSystemExtensionRequest* request = take(activations);
    onAnotherThread([&] { [request.delegate request:request didFinishWithResult:static_cast<OSSystemExtensionRequestResult>(result)]; });
}

void failExtensionActivation(const QString& description)
{
    OSSystemExtensionRequest* request = take(activations);
    onAnotherThread([&] { [request.delegate request:request didFailWithError:errorOf(description)]; });
}

QString oldestExtensionLookup()
{
    return lookups.empty() ? QString() : stateOf<Request>(lookups.front()).identifier;
}

QString oldestExtensionActivation()
{
    return activations.empty() ? QString() : stateOf<Request>(activations.front()).identifier;
}

} // namespace orvanta::testing::mac
