#pragma once

#include "service/url_session.h"

#include <QPointer>

#include <deque>
#include <future>
#include <memory>
#include <mutex>

namespace orvanta::testing {

/// A URL session without a network: it records the requests and holds their completions until the test releases them,
/// the oldest first. Requests may come from any thread, as with the real one.
class FakeUrlSession final : public UrlSession {
public:
    void send(HttpRequest request, QObject* context, Callback<UrlResult> completed) override
    {
        const std::scoped_lock lock(m_mutex);
        m_requests.push_back(std::move(request));
        m_held.push_back({ .context = context, .completed = std::make_shared<Callback<UrlResult>>(std::move(completed)) });
    }

    [[nodiscard]] UrlResult sendAndWait(HttpRequest request, const std::stop_token& stop) override
    {
        const auto answer = std::make_shared<std::promise<UrlResult>>();
        std::future<UrlResult> result = answer->get_future();
        {
            const std::scoped_lock lock(m_mutex);
            m_requests.push_back(std::move(request));
            m_held.push_back({ .waiting = answer });
        }
        const std::stop_callback cancelled(stop, [this, &answer] {
            const std::scoped_lock lock(m_mutex);
            const auto given = std::erase_if(m_held, [&answer](const Held& held) { return held.waiting == answer; });
            if (given != 0)
                answer->set_value(std::unexpected(TransportError { QStringLiteral("given up") }));
        });
        return result.get();
    }

    /// Every request so far, answered or not.
    [[nodiscard]] std::vector<HttpRequest> requests() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_requests;
    }

    /// How many requests wait for their answer.
    [[nodiscard]] std::size_t pending() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_held.size();
    }

    /// Answers the oldest request that waits; the callback runs from the event loop of its context's thread, like the
    /// real one's. False if none waits. The context must not die in another thread meanwhile.
    bool release(UrlResult result)
    {
        Held oldest;
        {
            const std::scoped_lock lock(m_mutex);
            if (m_held.empty())
                return false;
            oldest = std::move(m_held.front());
            m_held.pop_front();
        }
        if (oldest.waiting) {
            oldest.waiting->set_value(std::move(result));
        } else if (oldest.context) {
            QMetaObject::invokeMethod(
                oldest.context, [completed = std::move(oldest.completed), result = std::move(result)] { (*completed)(result); },
                Qt::QueuedConnection);
        }
        return true;
    }

    bool answer(int statusCode, const QByteArray& body = {}) { return release(UrlResponse { .statusCode = statusCode, .body = body }); }
    bool fail(const QString& description) { return release(std::unexpected(TransportError { description })); }

private:
    struct Held {
        QPointer<QObject> context = {};
        std::shared_ptr<Callback<UrlResult>> completed = {};
        std::shared_ptr<std::promise<UrlResult>> waiting = {}; ///< of a thread that blocks, instead of the other two
    };

    mutable std::mutex m_mutex;
    std::vector<HttpRequest> m_requests;
    std::deque<Held> m_held;
};

} // namespace orvanta::testing
