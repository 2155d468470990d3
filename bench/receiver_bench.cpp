// The receiver by itself, on a free port of the loopback address, for script/bench to post to.
//
//   receiver_bench
//
// Prints {"port": N}, then, for each line that it reads, one with "cpu_us", the CPU time of all its threads so far, and
// "requests", the posts that it accepted. Ends with its standard input.

#include "figures.h"
#include "harness/local_lifecycle_receiver.h"

#include <atomic>
#include <cstdio>
#include <iostream>
#include <string>

using namespace orvanta;

int main()
{
    std::atomic<unsigned long> requests = 0;
    LocalLifecycleReceiver receiver([&requests](AIHarness, const QByteArray&) { ++requests; }, 0);
    receiver.start();
    std::printf("{\"port\": %u}\n", unsigned { receiver.port() });
    std::fflush(stdout);
    for (std::string line; std::getline(std::cin, line);) {
        std::printf("{\"cpu_us\": %.1f, \"requests\": %lu}\n", bench::cpuMicroseconds(), requests.load());
        std::fflush(stdout);
    }
    return 0;
}
