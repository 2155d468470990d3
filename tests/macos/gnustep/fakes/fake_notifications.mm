#include "macos/gnustep/fakes/fake_system.h"
#include "macos/gnustep/fakes/object_state.h"

#include <Block.h>

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

// GNUstep's notification centres, with observers that hear on the queue that they asked for. Theirs would wait for an event
// loop that does not run here.

typedef void (^NotificationBlock)(NSNotification*);

@interface FakeObserver : NSObject
- (void)hear:(NSNotification*)notification;
@end

namespace {

struct Observer {
    NotificationBlock block = nullptr;
    bool isOnMainQueue = false;
};

} // namespace

@implementation FakeObserver

- (void)hear:(NSNotification*)notification
{
    const Observer& observer = orvanta::testing::mac::stateOf<Observer>(self);
    if (!observer.isOnMainQueue) {
        observer.block(notification);
        return;
    }
    NotificationBlock block = observer.block;
    NSNotification* kept = [notification retain];
    dispatch_async(dispatch_get_main_queue(), ^{
        block(kept);
        [kept release];
    });
}

@end

@implementation NSNotificationCenter (Fake)

- (id)addObserverForName:(NSString*)name object:(id)object queue:(NSOperationQueue*)queue usingBlock:(NotificationBlock)block
{
    FakeObserver* token = [[FakeObserver alloc] init];
    orvanta::testing::mac::stateOf<Observer>(token)
        = { .block = Block_copy(block), .isOnMainQueue = queue != nil && queue == [NSOperationQueue mainQueue] };
    orvanta::testing::mac::record(QStringLiteral("observe %1 of %2 on %3")
            .arg(QString::fromUtf8([name UTF8String]), object ? QStringLiteral("one object") : QStringLiteral("anybody"),
                queue ? QStringLiteral("the main queue") : QStringLiteral("any thread")));
    [self addObserver:token selector:@selector(hear:) name:name object:object];
    return token;
}

@end
