#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTest>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace orvanta::testing {

/// What a system that answers later, and on any thread, has answered so far.
template <typename T>
class Answers {
public:
    /// Something to call with an answer. It may outlive this object.
    [[nodiscard]] auto take()
    {
        return [kept = m_kept](const T& answer) {
            const std::lock_guard lock(kept->mutex);
            kept->answers.push_back(answer);
        };
    }

    [[nodiscard]] std::vector<T> all() const
    {
        const std::lock_guard lock(m_kept->mutex);
        return m_kept->answers;
    }
    [[nodiscard]] std::size_t count() const { return all().size(); }

private:
    struct Kept {
        std::mutex mutex;
        std::vector<T> answers;
    };

    std::shared_ptr<Kept> m_kept = std::make_shared<Kept>();
};

/// Lets `settle` and the event loop work until `condition` holds, for as long as a busy machine may need.
inline bool comesTrue(const std::function<void()>& settle, const std::function<bool()>& condition)
{
    constexpr int patience = 60'000;
    for (const QDeadlineTimer end(patience); !end.hasExpired();) {
        settle();
        QCoreApplication::processEvents();
        if (condition())
            return true;
        QTest::qWait(1);
    }
    return condition();
}

} // namespace orvanta::testing
