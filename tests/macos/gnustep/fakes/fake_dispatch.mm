#include "macos/gnustep/fakes/fake_system.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <Block.h>

#import <dispatch/dispatch.h>

// The main queue: Qt's event loop on the main thread.

@interface FakeMainQueue : NSObject <OS_dispatch_queue>
@end

@implementation FakeMainQueue
@end

dispatch_queue_t dispatch_get_main_queue()
{
    static FakeMainQueue* queue = [[FakeMainQueue alloc] init];
    return queue;
}

void dispatch_async(dispatch_queue_t queue, dispatch_block_t block)
{
    if (queue != dispatch_get_main_queue()) {
        orvanta::testing::mac::record(QStringLiteral("dispatch_async to another queue"));
        return;
    }
    dispatch_block_t copy = Block_copy(block);
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [copy] {
            @autoreleasepool {
                copy();
            }
            Block_release(copy);
        },
        Qt::QueuedConnection);
}
