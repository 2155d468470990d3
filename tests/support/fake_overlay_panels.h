#pragma once

#include "platform/overlay_panels.h"
#include "support/call_log.h"

#include <QRect>

#include <vector>

namespace orvanta::testing {

class FakeOverlayPanels;

/// What became of one panel: kept by FakeOverlayPanels, so that a test can look after the panel itself is gone.
struct FakePanelState {
    bool alive = true;
    bool isShown = false;
    QRect frame;
    bool hasContent = false;
    std::optional<Callback<>> acknowledge;
    int contents = 0; ///< how often fresh content was set
    int fronts = 0;   ///< how often it was ordered front
};

/// Panels without a window system: state, and every call in a log.
class FakeOverlayPanels : public OverlayPanels {
public:
    explicit FakeOverlayPanels(CallLog& log) : m_log(log) { }

    [[nodiscard]] std::unique_ptr<OverlayPanel> make() override
    {
        m_log.add(QStringLiteral("panels.make"));
        m_panels.push_back(std::make_shared<FakePanelState>());
        return std::make_unique<Panel>(m_log, m_panels.back());
    }

    [[nodiscard]] const std::vector<std::shared_ptr<FakePanelState>>& panels() const { return m_panels; }

    [[nodiscard]] int shownCount() const
    {
        int shown = 0;
        for (const auto& panel : m_panels)
            shown += panel->isShown ? 1 : 0;
        return shown;
    }

private:
    class Panel : public OverlayPanel {
    public:
        Panel(CallLog& log, std::shared_ptr<FakePanelState> state) : m_log(log), m_state(std::move(state)) { }
        ~Panel() override { m_state->alive = m_state->isShown = false; }

        void setFrame(const QRect& frame) override
        {
            m_log.add(QStringLiteral("panel.setFrame %1,%2 %3x%4").arg(frame.x()).arg(frame.y()).arg(frame.width()).arg(frame.height()));
            m_state->frame = frame;
        }

        void setContent(std::optional<Callback<>> acknowledge) override
        {
            m_log.add(acknowledge ? QStringLiteral("panel.setContent acknowledge") : QStringLiteral("panel.setContent"));
            m_state->hasContent = true;
            m_state->acknowledge = std::move(acknowledge);
            ++m_state->contents;
        }

        void orderFront() override
        {
            m_log.add(QStringLiteral("panel.orderFront"));
            m_state->isShown = true;
            ++m_state->fronts;
        }

        void orderOut() override
        {
            m_log.add(QStringLiteral("panel.orderOut"));
            m_state->isShown = false;
        }

    private:
        CallLog& m_log;
        std::shared_ptr<FakePanelState> m_state;
    };

    CallLog& m_log;
    std::vector<std::shared_ptr<FakePanelState>> m_panels;
};

} // namespace orvanta::testing
