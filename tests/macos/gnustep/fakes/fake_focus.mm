#include "macos/gnustep/fakes/fake_focus.h"

#include "macos/gnustep/fakes/fake_system.h"
#include "platform/macos/foundation_values.h"

#include <deque>

#include <Block.h>

#import <Intents/Intents.h>
#import <UserNotifications/UserNotifications.h>

using namespace orvanta;
using namespace orvanta::testing::mac;

typedef void (^NotificationAnswer)(BOOL, NSError*);
typedef void (^FocusAnswer)(INFocusStatusAuthorizationStatus);

namespace {

std::optional<bool> focused;
int authorisation = 0;
std::deque<NotificationAnswer> notificationRequests;
std::deque<FocusAnswer> focusRequests;

const ResetAtBegin resetAtBegin([] {
    focused = std::nullopt;
    authorisation = 0;
    notificationRequests.clear();
    focusRequests.clear();
});

template <typename Answer>
Answer take(std::deque<Answer>& requests)
{
    Answer oldest = requests.front();
    requests.pop_front();
    return oldest;
}

} // namespace

@implementation INFocusStatus

- (NSNumber*)isFocused
{
    return focused ? [NSNumber numberWithBool:*focused] : nil;
}

@end

@implementation INFocusStatusCenter

+ (INFocusStatusCenter*)defaultCenter
{
    static INFocusStatusCenter* center = [[INFocusStatusCenter alloc] init];
    return center;
}
- (INFocusStatus*)focusStatus
{
    return [[[INFocusStatus alloc] init] autorelease];
}
- (INFocusStatusAuthorizationStatus)authorizationStatus
{
    return static_cast<INFocusStatusAuthorizationStatus>(authorisation);
}
- (void)requestAuthorizationWithCompletionHandler:(FocusAnswer)completion
{
    record(QStringLiteral("focus requestAuthorization"));
    focusRequests.push_back(Block_copy(completion));
}

@end

@implementation UNUserNotificationCenter

+ (UNUserNotificationCenter*)currentNotificationCenter
{
    static UNUserNotificationCenter* center = [[UNUserNotificationCenter alloc] init];
    return center;
}
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options completionHandler:(NotificationAnswer)completion
{
    record(QStringLiteral("notifications requestAuthorization %1").arg(static_cast<int>(options)));
    notificationRequests.push_back(Block_copy(completion));
}

@end

namespace orvanta::testing::mac {

void turnFocus(std::optional<bool> isOn)
{
    focused = isOn;
}

void setFocusAuthorisation(int status)
{
    authorisation = status;
}

void answerNotificationRequest(bool granted)
{
    const NotificationAnswer answer = take(notificationRequests);
    onAnotherThread([&] { answer(granted, nil); });
}

void failNotificationRequest(const QString& description)
{
    const NotificationAnswer answer = take(notificationRequests);
    onAnotherThread([&] {
        answer(NO,
            [NSError errorWithDomain:@"UNErrorDomain"
                                code:1
                            userInfo:[NSDictionary dictionaryWithObject:toNSString(description) forKey:NSLocalizedDescriptionKey]]);
    });
}

void answerFocusRequest(int status)
{
    authorisation = status;
    const FocusAnswer answer = take(focusRequests);
    onAnotherThread([&] { answer(static_cast<INFocusStatusAuthorizationStatus>(status)); });
}

int pendingFocusRequests()
{
    return static_cast<int>(focusRequests.size() + notificationRequests.size());
}

} // namespace orvanta::testing::mac
