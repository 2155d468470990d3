// The receiver by itself, on a free port of the loopback address, for script/bench to post to.
//
//   receiver_bench
//
// Prints {"port": N}, then, for each line that it reads, one with "cpu_us", the CPU time of all its threads so far, and
// "requests", the posts that it accepted. Ends with its standard input.

#include "harness/local_lifecycle_receiver.h"

#include <atomic>
#include <cstdio>
#include <ctime>
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
        timespec now {};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        std::printf("{\"cpu_us\": %.1f, \"requests\": %lu}\n", 1e6 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1000,
            requests.load());
        std::fflush(stdout);
    }
    return 0;
}
