// How long a host takes to be looked up among a million blocked domains, what the table takes, and the same for
// std::unordered_set.

#include "figures.h"
#include "filter/core/domain_table.h"

#include <chrono>
#include <cstdio>
#include <random>
#include <unordered_set>
#include <utility>

using namespace orvanta::filter;

namespace {

template <typename Work>
double nanosecondsEach(std::size_t times, Work work)
{
    std::vector<double> rounds;
    for (int round = 0; round < 9; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        rounds.push_back(std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - begin).count() / static_cast<double>(times));
    }
    return orvanta::bench::median(std::move(rounds));
}

} // namespace

int main()
{
    std::mt19937 random(1);
    std::vector<std::string> entries;
    for (int entry = 0; entry < 1'000'000; ++entry) {
        std::string name;
        for (auto length = 8 + random() % 9; name.size() < length;)
            name += static_cast<char>('a' + random() % 26);
        entries.push_back(name + ".com");
    }
    const auto begin = std::chrono::steady_clock::now();
    const DomainTable table = DomainTable::build(entries);
    const std::chrono::duration<double, std::milli> building = std::chrono::steady_clock::now() - begin;
    const std::unordered_set<std::string> peer(entries.begin(), entries.end());

    std::vector<std::string> asked;
    for (int question = 0; question < 200'000; ++question) {
        const std::string& entry = entries[random() % entries.size()];
        asked.push_back(random() % 2 ? "www." + entry : "www.x" + entry);
    }
    std::size_t found = 0;
    const double ours = nanosecondsEach(asked.size(), [&] {
        for (const std::string& host : asked)
            found += table.entryCovering(host).has_value();
    });
    const double theirs = nanosecondsEach(asked.size(), [&] {
        for (const std::string& host : asked)
            for (std::size_t at = 0; at != std::string::npos; at = host.find('.', at + 1))
                found += peer.contains(host.substr(at == 0 ? 0 : at + 1));
    });
    std::printf("{\"ours_ns\": %.0f, \"peer_ns\": %.0f, \"bytes_each\": %.1f, \"build_ms\": %.0f, \"found\": %zu}\n", ours, theirs,
        static_cast<double>(table.memory()) / static_cast<double>(table.size()), building.count(), found);
    return 0;
}
