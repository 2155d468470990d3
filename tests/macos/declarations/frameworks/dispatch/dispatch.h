#pragma once

// What the macOS layer uses of Dispatch, declared from what is publicly documented.

#import <Foundation/Foundation.h>

@protocol OS_dispatch_queue <NSObject>
@end

typedef NSObject<OS_dispatch_queue>* dispatch_queue_t;
typedef void (^dispatch_block_t)(void);

#ifdef __cplusplus
extern "C" {
#endif

dispatch_queue_t _Nonnull dispatch_get_main_queue(void);
void dispatch_async(dispatch_queue_t _Nonnull queue, dispatch_block_t _Nonnull block);

#ifdef __cplusplus
}
#endif
