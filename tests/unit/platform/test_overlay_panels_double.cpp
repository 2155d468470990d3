#include "support/contracts/overlay_panels_contract.h"
#include "support/fake_overlay_panels.h"

using namespace orvanta;
using namespace orvanta::testing;

class TestOverlayPanelsDouble : public OverlayPanelsContract {
    Q_OBJECT

protected:
    std::unique_ptr<OverlayPanels> makePanels() override
    {
        auto panels = std::make_unique<FakeOverlayPanels>(m_log);
        m_panels = panels.get();
        return panels;
    }

    [[nodiscard]] int shownPanels() override { return m_panels->shownCount(); }
    [[nodiscard]] QRect shownFrame() override { return m_panels->panels().back()->frame; }
    [[nodiscard]] bool hasButton() override { return m_panels->panels().back()->acknowledge.has_value(); }
    void pressButton() override { (*m_panels->panels().back()->acknowledge)(); }
    void askToClose() override { } // there is no window to close
    [[nodiscard]] QRect display() const override { return { 0, 0, 800, 600 }; }
    [[nodiscard]] QRect otherDisplay() const override { return { 800, 0, 1024, 768 }; }

private:
    CallLog m_log;
    FakeOverlayPanels* m_panels = nullptr;
};

QTEST_GUILESS_MAIN(TestOverlayPanelsDouble)
#include "test_overlay_panels_double.moc"
