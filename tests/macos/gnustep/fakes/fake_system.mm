#include "macos/gnustep/fakes/fake_system.h"

#include <thread>
#include <vector>

#import <Foundation/Foundation.h>

namespace orvanta::testing::mac {

namespace {

std::vector<void (*)()>& resets()
{
    static std::vector<void (*)()> all;
    return all;
}

} // namespace

QStringList& calls()
{
    static QStringList all;
    return all;
}

void begin()
{
    @autoreleasepool {
        for (const auto reset : resets())
            reset();
    }
    calls().clear();
}

void onBegin(void (*reset)())
{
    resets().push_back(reset);
}

void onAnotherThread(const std::function<void()>& task)
{
    std::thread([&task] {
        GSRegisterCurrentThread();
        @autoreleasepool {
            task();
        }
        GSUnregisterCurrentThread();
    }).join();
}

void record(const QString& call)
{
    calls() << call;
}

} // namespace orvanta::testing::mac
