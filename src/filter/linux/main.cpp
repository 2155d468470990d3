#include "filter/core/host_name.h"
#include "filter/linux/filter_service.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <systemd/sd-daemon.h>

using namespace orvanta::filter;

namespace {

constexpr int usageError = 2;

int fail(const std::string& reason, int status = EXIT_FAILURE)
{
    std::fprintf(stderr, "orvanta-filterd: %s\n", reason.c_str());
    return status;
}

/// Which entry of the stored list covers the address, or that none does.
int explain(const FilterService::Options& options, const std::string& address)
{
    const auto state = StateFile(options.stateFolder).read();
    if (!state)
        return fail(state.error().reason);
    const auto host = hostOfEntry(address);
    if (!host) {
        std::printf("%s names no host, so nothing blocks it\n", address.c_str());
        return EXIT_SUCCESS;
    }
    for (const std::string& entry : state->preferences.blockedDomains) {
        const std::string only[] { entry };
        const DomainTable table = DomainTable::build(only); // what covers the host is a view into it
        if (const auto covering = table.entryCovering(*host)) {
            std::printf("%s is blocked by the entry %s, which covers %s and all below it%s\n", host->c_str(), entry.c_str(),
                std::string(*covering).c_str(), state->preferences.asksToFilter() && state->activated ? "" : "; but the filter is off");
            return EXIT_SUCCESS;
        }
    }
    std::printf("%s is not blocked: none of %zu entries covers it\n", host->c_str(), state->preferences.blockedDomains.size());
    return EXIT_SUCCESS;
}

int serve(const FilterService::Options& options)
{
    // Both signals end the loop, so that the rules are taken away on the way out.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    sigprocmask(SIG_BLOCK, &ending, nullptr);
    sd_event* loop = nullptr;
    if (sd_event_default(&loop) < 0 || sd_event_add_signal(loop, nullptr, SIGTERM, nullptr, nullptr) < 0
        || sd_event_add_signal(loop, nullptr, SIGINT, nullptr, nullptr) < 0)
        return fail("no event loop");
    (void)sd_event_set_watchdog(loop, 1);
    int status = EXIT_SUCCESS;
    {
        const auto service = FilterService::start(loop, options);
        if (!service)
            return fail(service.error());
        (void)sd_notify(0, "READY=1");
        status = sd_event_loop(loop);
        (void)sd_notify(0, "STOPPING=1");
    }
    sd_event_unref(loop);
    return status < 0 ? fail(std::strerror(-status)) : EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    FilterService::Options options;
    if (const char* folder = std::getenv("STATE_DIRECTORY"))
        options.stateFolder = folder;
    if (argc == 3 && std::strcmp(argv[1], "--explain") == 0)
        return explain(options, argv[2]);
    if (argc == 2 && std::strcmp(argv[1], "--remove-rules") == 0) {
        const auto removed = FilterRules::remove();
        return removed ? EXIT_SUCCESS : fail(removed.error());
    }
    if (argc != 1)
        return fail("takes --explain ADDRESS, --remove-rules, or nothing", usageError);
    return serve(options);
}
