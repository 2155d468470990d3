// Saves through SettingsFile as fast as it can, for the tests of sudden ends and of copies that run at the same time.
//
//   settings_writer FILE            until it is killed; says the number of each step on standard output once it is saved
//   settings_writer FILE KEY COUNT  counts up to COUNT under KEY, and ends with status 1 should a count get lost, 2 should one not be saved

#include "platform/linux/settings_file.h"

#include "settings_writer_states.h"

#include <QCoreApplication>

#include <charconv>
#include <cstdio>

#include <unistd.h>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// How often the lists have been saved already; 0 for a fresh file.
int roundsIn(SettingsFile& settings, const QString& key)
{
    const auto value = settings.value(key);
    if (!value)
        return 0;
    if (const auto* domains = std::get_if<QStringList>(&*value))
        return domains->value(0).toInt();
    int round = 0;
    const auto& data = std::get<QByteArray>(*value);
    std::from_chars(data.begin(), data.end(), round);
    return round;
}

[[noreturn]] void saveForEver(SettingsFile& settings)
{
    const QString domainsKey = u"blockedDomains"_s;
    const QString applicationsKey = u"blockedApplications"_s;
    // Step 2n+1 saves the domains of round n+1, step 2n+2 the applications of that round.
    for (int step = roundsIn(settings, domainsKey) + roundsIn(settings, applicationsKey) + 1;; ++step) {
        const int round = (step + 1) / 2;
        const auto saved = step % 2 ? settings.setValue(domainsKey, domainsOf(round)) : settings.setValue(applicationsKey, applicationsOf(round));
        if (!saved)
            qFatal("%s", qPrintable(saved.error().description));
        const QByteArray line = QByteArray::number(step) + '\n';
        if (::write(STDOUT_FILENO, line.constData(), static_cast<size_t>(line.size())) != line.size())
            qFatal("nobody listens");
    }
}

int countUp(SettingsFile& settings, const QString& key, int count)
{
    for (int number = 1; number <= count; ++number) {
        const StoredValue value = QByteArray::number(number);
        // Copies that do nothing but save can keep one of them from its turn for longer than it waits. It is then told
        // so, which is no loss; it tries again.
        constexpr int attempts = 20;
        auto saved = settings.setValue(key, value);
        for (int attempt = 1; !saved && attempt < attempts; ++attempt)
            saved = settings.setValue(key, value);
        if (!saved) {
            std::fprintf(stderr, "%s\n", qPrintable(saved.error().description));
            return 2;
        }
        if (settings.value(key) != value)
            return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    SettingsFile settings(arguments.value(1));
    if (arguments.size() == 4)
        return countUp(settings, arguments.at(2), arguments.at(3).toInt());
    saveForEver(settings);
}
