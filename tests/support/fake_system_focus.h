#pragma once

#include "platform/system_focus.h"
#include "support/call_log.h"

#include <deque>
#include <utility>

namespace orvanta::testing {

/// A system's Focus as the test sets it. Every operation is logged; the requests wait until the test answers them.
class FakeSystemFocus : public SystemFocus {
public:
    explicit FakeSystemFocus(CallLog& log) : m_log(log) { }

    void requestNotificationPermission(Callback<const Result<bool>&> answered) override
    {
        m_log.add(QStringLiteral("systemFocus.requestNotificationPermission"));
        m_notificationRequests.push_back(std::move(answered));
    }

    void requestAuthorisation(Callback<FocusAuthorisation> answered) override
    {
        m_log.add(QStringLiteral("systemFocus.requestAuthorisation"));
        m_authorisationRequests.push_back(std::move(answered));
    }

    [[nodiscard]] FocusAuthorisation authorisation() const override
    {
        m_log.add(QStringLiteral("systemFocus.authorisation"));
        return authorisationNow;
    }

    [[nodiscard]] std::optional<bool> isFocused() const override
    {
        m_log.add(QStringLiteral("systemFocus.isFocused"));
        return isFocusedNow;
    }

    /// Answers the oldest request for permission to show alerts.
    void answerNotificationPermission(const Result<bool>& answer) { take(m_notificationRequests)(answer); }

    /// Answers the oldest request for authorisation, which from then on is as answered.
    void answerAuthorisation(FocusAuthorisation answer)
    {
        authorisationNow = answer;
        take(m_authorisationRequests)(answer);
    }

    [[nodiscard]] std::size_t pendingNotificationRequests() const { return m_notificationRequests.size(); }
    [[nodiscard]] std::size_t pendingAuthorisationRequests() const { return m_authorisationRequests.size(); }

    FocusAuthorisation authorisationNow = FocusAuthorisation::authorised;
    std::optional<bool> isFocusedNow = false;

private:
    template <typename Request>
    static Request take(std::deque<Request>& requests)
    {
        Request first = std::move(requests.front());
        requests.pop_front();
        return first;
    }

    CallLog& m_log;
    std::deque<Callback<const Result<bool>&>> m_notificationRequests;
    std::deque<Callback<FocusAuthorisation>> m_authorisationRequests;
};

} // namespace orvanta::testing
