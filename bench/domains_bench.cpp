// Adds domains, one at a time, to a sorted list of a given length, and does the same by sorting anew; checks that both
// come to the same list.
//
//   domains_bench LENGTH [ADDITIONS]
//
// Prints one line of JSON, medians in ms of CPU time:
//   add     one addition
//   shared  one addition while somebody holds the list before it, as a view does: the list is copied first
//   first   the first addition to a list that was just loaded
//   sort    one addition by appending, sorting and dropping what stands twice, to a list that is held as well

#include "app/policy/blocked_domains.h"
#include "figures.h"

#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

using namespace orvanta;
using namespace orvanta::bench;
using namespace Qt::StringLiterals;

namespace {

QString someDomain(std::mt19937& random)
{
    constexpr int letters = 26;
    std::uniform_int_distribution<int> letter(0, letters - 1);
    std::uniform_int_distribution<int> length(6, 18);
    QString name;
    for (int left = length(random); left > 0; --left)
        name += QChar(u'a' + letter(random));
    return name + u".example"_s;
}

QStringList sortedDomains(qsizetype length, std::mt19937& random)
{
    QStringList domains;
    domains.reserve(length);
    while (domains.size() < length) {
        while (domains.size() < length)
            domains << someDomain(random);
        std::ranges::sort(domains, standsBefore);
        const auto twice = std::ranges::unique(domains);
        domains.erase(twice.begin(), twice.end());
    }
    return domains;
}

} // namespace

int main(int argc, char** argv)
{
    const qsizetype length = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0;
    const long additions = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 25;
    if (length <= 0 || additions <= 0) {
        std::fputs("domains_bench: how long a list?\n", stderr);
        return 2;
    }
    std::mt19937 random(825); // NOLINT(bugprone-random-generator-seed,cert-msc51-cpp): the same lists in every run
    const QStringList before = sortedDomains(length, random);
    QStringList added;
    for (long index = 0; index < additions; ++index)
        added << (index % 5 == 4 ? before.at(length / 2) : someDomain(random)); // some stand there already

    std::vector<double> first;
    for (int again = 0; again < 5; ++again) {
        QStringList copy = before;
        copy.detach();
        BlockedDomains fresh(std::move(copy));
        const double begin = cpuMilliseconds();
        fresh.add(added.front());
        first.push_back(cpuMilliseconds() - begin);
    }

    std::vector<double> alone;
    BlockedDomains domains(before);
    domains.add(before.front()); // settles and detaches it
    for (const QString& domain : added) {
        const double begin = cpuMilliseconds();
        domains.add(domain);
        alone.push_back(cpuMilliseconds() - begin);
    }

    std::vector<double> shared;
    BlockedDomains shown(before);
    shown.add(before.front());
    for (const QString& domain : added) {
        const QStringList held = shown.values();
        const double begin = cpuMilliseconds();
        shown.add(domain);
        shared.push_back(cpuMilliseconds() - begin);
    }

    std::vector<double> sorting;
    QStringList plain = before;
    for (const QString& domain : added) {
        const QStringList held = plain;
        const double begin = cpuMilliseconds();
        plain << domain;
        std::ranges::sort(plain, standsBefore);
        const auto twice = std::ranges::unique(plain);
        plain.erase(twice.begin(), twice.end());
        sorting.push_back(cpuMilliseconds() - begin);
    }

    if (domains.values() != plain || shown.values() != plain) {
        std::fputs("domains_bench: the lists differ\n", stderr);
        return EXIT_FAILURE;
    }
    std::printf(
        "{\"add\": %.4f, \"shared\": %.4f, \"first\": %.4f, \"sort\": %.4f}\n", median(alone), median(shared), median(first), median(sorting));
    return EXIT_SUCCESS;
}
