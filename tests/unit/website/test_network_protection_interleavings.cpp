#include "website/network_protection_controller.h"

#include "support/fake_extension_manager.h"
#include "support/fake_filter_manager.h"
#include "support/fake_url_opener.h"

#include <QTest>

#include <array>
#include <vector>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

/// What may happen next: a wish, an answer, or the main thread's turn.
enum class Step { focusOn, focusOff, newList, loadEnds, loadFails, saveEnds, saveFails, mainThreadRuns };

constexpr std::array allSteps { Step::focusOn, Step::focusOff, Step::newList, Step::loadEnds, Step::loadFails, Step::saveEnds, Step::saveFails,
    Step::mainThreadRuns };

/// A controller with an installed extension, and beside it what should come of the steps: the guard in two variables.
class World {
public:
    World()
    {
        m_extensions.find({ { .isEnabled = true } });
        m_filter.releaseLoad();
        QCoreApplication::processEvents();
        m_begun = m_filter.loadCount();
    }

    [[nodiscard]] bool mayTake(Step step) const
    {
        switch (step) {
        case Step::loadEnds:
        case Step::loadFails:
            return m_filter.pendingLoads() > 0;
        case Step::saveEnds:
        case Step::saveFails:
            return m_filter.pendingSaves() > 0;
        case Step::mainThreadRuns:
            return m_endsUnseen > 0;
        default:
            return true;
        }
    }

    void take(Step step)
    {
        switch (step) {
        case Step::focusOn:
        case Step::focusOff:
            m_focus = step == Step::focusOn;
            m_controller.setFocusActive(m_focus);
            wish();
            break;
        case Step::newList:
            m_list = { QString::number(++m_lists) };
            m_controller.setBlockedDomains(m_list);
            wish();
            break;
        case Step::loadEnds:
            m_filter.releaseLoad();
            break;
        case Step::loadFails:
            m_filter.failLoad(u"load"_s);
            ++m_endsUnseen;
            m_lastPassFailed = true;
            break;
        case Step::saveEnds:
            m_filter.releaseSave();
            ++m_endsUnseen;
            break;
        case Step::saveFails:
            m_filter.failSave(u"save"_s);
            ++m_endsUnseen;
            m_lastPassFailed = true;
            break;
        case Step::mainThreadRuns:
            QCoreApplication::sendPostedEvents();
            passEnds();
            break;
        }
    }

    /// What has to hold after every step; the empty text if it does.
    [[nodiscard]] QString complaint() const
    {
        if (m_filter.pendingLoads() + m_filter.pendingSaves() > 1)
            return u"two passes in flight"_s;
        if (m_filter.loadCount() - m_begun != m_passes)
            return u"%1 passes begun instead of %2"_s.arg(m_filter.loadCount() - m_begun).arg(m_passes);
        return {};
    }

    /// Lets everything end well, and says what is wrong with the outcome.
    [[nodiscard]] QString settledComplaint()
    {
        for (bool moved = true; moved;) {
            moved = false;
            for (const Step step : { Step::loadEnds, Step::saveEnds, Step::mainThreadRuns }) {
                if (mayTake(step)) {
                    take(step);
                    moved = true;
                    if (const QString found = complaint(); !found.isEmpty())
                        return found;
                }
            }
        }
        if (m_inFlight)
            return u"a pass never ended"_s;
        if (m_passes == 0 || m_lastPassFailed)
            return {}; // nothing was wished, or the last wish's own pass failed: nobody tries again
        const FilterConfiguration& saved = m_filter.saved;
        if (saved.isEnabled != m_focus)
            return u"the last focus did not win"_s;
        if (saved.providerConfiguration->vendorConfiguration.value(u"blockedDomains"_s).toStringList() != m_list)
            return u"the last list did not win"_s;
        return {};
    }

private:
    void wish()
    {
        if (m_inFlight) {
            m_pending = true;
        } else {
            passBegins();
        }
    }

    void passBegins()
    {
        m_inFlight = true;
        m_lastPassFailed = false;
        ++m_passes;
    }

    void passEnds()
    {
        m_endsUnseen = 0;
        m_inFlight = false;
        if (m_pending) {
            m_pending = false;
            passBegins();
        }
    }

    CallLog m_log;
    FakeExtensionManager m_extensions { m_log };
    FakeFilterManager m_filter { m_log };
    FakeUrlOpener m_opener;
    NetworkProtectionController m_controller { m_extensions, m_filter, m_opener };

    int m_begun = 0;
    bool m_focus = false;
    QStringList m_list;
    int m_lists = 0;
    bool m_inFlight = false;
    bool m_pending = false;
    bool m_lastPassFailed = false;
    int m_passes = 0;
    int m_endsUnseen = 0; ///< passes that have ended without the main thread's knowing
};

constexpr std::size_t depth = 8;

/// Tries every continuation of `path` up to the depth, each in a world of its own.
class Explorer {
public:
    [[nodiscard]] QString explore()
    {
        World world;
        for (const Step step : m_path)
            world.take(step);
        std::vector<Step> next;
        if (m_path.size() < depth)
            std::ranges::copy_if(allSteps, std::back_inserter(next), [&](Step step) { return world.mayTake(step); });
        if (QString found = world.complaint(); !found.isEmpty())
            return found;
        ++m_visited;
        if (QString found = world.settledComplaint(); !found.isEmpty())
            return found;
        for (const Step step : next) {
            m_path.push_back(step);
            if (QString found = explore(); !found.isEmpty())
                return found;
            m_path.pop_back();
        }
        return {};
    }

    [[nodiscard]] QString path() const
    {
        QStringList numbers;
        for (const Step step : m_path)
            numbers << QString::number(static_cast<int>(step));
        return numbers.join(u' ');
    }
    [[nodiscard]] int visited() const { return m_visited; }

private:
    std::vector<Step> m_path;
    int m_visited = 0;
};

} // namespace

class TestNetworkProtectionInterleavings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whateverHappensWhenTheLastWishWinsAndNoPassIsLost()
    {
        Explorer explorer;
        const QString found = explorer.explore();
        QVERIFY2(found.isEmpty(), qPrintable(found + u" after "_s + explorer.path()));
        qInfo("%d orders of up to %zu steps", explorer.visited(), depth);
        QVERIFY(explorer.visited() > 100000);
    }
};

QTEST_GUILESS_MAIN(TestNetworkProtectionInterleavings)
#include "test_network_protection_interleavings.moc"
