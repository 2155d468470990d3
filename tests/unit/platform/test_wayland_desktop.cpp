#include "platform/linux/browser_named_applications.h"
#include "platform/linux/desktop_script_runner.h"
#include "platform/linux/desktop_system_focus.h"
#include "platform/linux/qt_screens.h"
#include "platform/linux/wayland/layer_cover_window.h"
#include "platform/linux/wayland/wayland_running_applications.h"
#include "platform/linux/x11_overlay_panels.h"
#include "platform/linux/x11_panel_windows.h"
#include "platform/platform.h"
#include "support/contracts/overlay_panels_contract.h"
#include "support/contracts/screens_contract.h"
#include "support/contracts/script_runner_contract.h"
#include "support/contracts/system_focus_contract.h"
#include "support/do_not_disturb.h"
#include "support/key_content.h"
#include "support/wayland_hands.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGSimpleRectNode>
#include <QScreen>
#include <QTest>

using namespace orvanta;
using namespace orvanta::testing;
using namespace Qt::StringLiterals;

namespace {

QString compositor()
{
    return qEnvironmentVariable("ORVANTA_COMPOSITOR");
}

bool isSway()
{
    return compositor() == "sway-in-x"_L1;
}

/// Like nothing else on these desktops.
const QColor panelColour(200, 30, 90);

/// Fills its panel with that colour, and counts the keys beside what the least does.
class ColourItem : public KeyItem {
public:
    static inline int keys = 0;

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        ++keys;
        KeyItem::keyPressEvent(event);
    }
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/) override
    {
        auto* filled = node ? static_cast<QSGSimpleRectNode*>(node) : new QSGSimpleRectNode;
        filled->setRect(boundingRect());
        filled->setColor(panelColour);
        return filled;
    }
};

class ColourContentFactory : public OverlayContentFactory {
public:
    [[nodiscard]] std::unique_ptr<OverlayContent> make() override { return std::make_unique<KeyContent>(std::make_unique<ColourItem>()); }
};

} // namespace

/// The cover that this compositor gets: a layer surface, or a window of XWayland. What is on screen, the compositor's own picture tells.
class TestWaylandOverlayPanels : public OverlayPanelsContract {
    Q_OBJECT

    std::unique_ptr<OverlayPanels> makePanels() override
    {
        if (const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
            return std::make_unique<X11OverlayPanels>(m_contents, x11->connection(), m_panelWindows, X11CoverWindow::LastResort::none);
        auto shell = LayerShell::find();
        return shell ? std::make_unique<LayerOverlayPanels>(m_contents, std::move(shell)) : nullptr;
    }

    [[nodiscard]] int shownPanels() override
    {
        const int here = panelsOn(display());
        return here != 0 ? here : panelsOn(otherDisplay());
    }
    [[nodiscard]] QRect shownFrame() override
    {
        const int here = panelsOn(display());
        const int there = panelsOn(otherDisplay());
        return here == 1 && there == 0 ? display() : here == 0 && there == 1 ? otherDisplay() : QRect();
    }
    /// One if the display's corners and its middle are the panel's, none if they all are not; otherwise neither.
    [[nodiscard]] int panelsOn(const QRect& frame)
    {
        const auto own = std::ranges::count(colours(placesOf(frame)), panelColour);
        return own == 0 ? 0 : own == placesOf(frame).size() ? 1 : -1;
    }
    [[nodiscard]] bool hasButton() override
    {
        const ColourItem* item = shownItem();
        return item && item->acknowledge.has_value();
    }
    void pressButton() override
    {
        // The keyboard is on its way to a cover a moment longer than its picture, and a key that comes before is somebody else's.
        const int before = ColourItem::keys;
        QDeadlineTimer deadline(2 * patience);
        while (ColourItem::keys == before && !deadline.hasExpired()) {
            QTRY_VERIFY_WITH_TIMEOUT(QGuiApplication::focusWindow(), patience);
            QCOMPARE(m_hands.tell(u"key Return"_s), QByteArray("done"));
            constexpr int wonder = 5'000;
            (void)QTest::qWaitFor([before] { return ColourItem::keys != before; }, wonder);
        }
        QVERIFY(ColourItem::keys != before);
    }
    void askToClose() override
    {
        QQuickWindow* cover = shownCover();
        if (QGuiApplication::platformName() == "xcb"_L1)
            QCOMPARE(QProcess::execute(u"wmctrl"_s, { u"-i"_s, u"-c"_s, u"0x%1"_s.arg(cover->winId(), 0, 16) }), 0);
        else
            QVERIFY(!cover->close()); // layers have no cross; this is what any other window would be told
    }
    [[nodiscard]] QRect display() const override { return QGuiApplication::screens().at(0)->geometry(); }
    [[nodiscard]] QRect otherDisplay() const override { return QGuiApplication::screens().at(1)->geometry(); }

    static QList<QPoint> placesOf(const QRect& frame)
    {
        return { frame.topLeft(), frame.topRight(), frame.bottomLeft(), frame.bottomRight(), frame.center() };
    }
    [[nodiscard]] QList<QColor> colours(const QList<QPoint>& places)
    {
        QString order = u"colours"_s;
        for (const QPoint& place : places)
            order += u" %1 %2"_s.arg(place.x()).arg(place.y());
        QList<QColor> result;
        for (const QByteArray& colour : m_hands.tell(order).split(' ')) {
            const QList<QByteArray> parts = colour.split(',');
            result << (parts.size() == 3 ? QColor(parts[0].toInt(), parts[1].toInt(), parts[2].toInt()) : QColor());
        }
        return result;
    }
    [[nodiscard]] static QQuickWindow* shownCover()
    {
        for (QWindow* window : QGuiApplication::topLevelWindows())
            if (auto* cover = qobject_cast<QQuickWindow*>(window); cover && cover->isVisible())
                return cover;
        return nullptr;
    }
    [[nodiscard]] static ColourItem* shownItem()
    {
        if (QQuickWindow* cover = shownCover()) {
            for (QQuickItem* item : cover->contentItem()->childItems())
                if (auto* content = dynamic_cast<ColourItem*>(item); content && content->isVisible())
                    return content;
        }
        return nullptr;
    }

public:
    explicit TestWaylandOverlayPanels(Hands& hands) : m_hands(hands) { }

private:
    Hands& m_hands;
    ColourContentFactory m_contents;
    PanelWindows m_panelWindows;
};

class TestWaylandScreens : public ScreensContract {
    Q_OBJECT

    std::unique_ptr<Screens> makeScreens() override
    {
        connect(2);
        [this] { QCOMPARE(m_hands.tell(u"none"_s), QByteArray("done")); }();
        return std::make_unique<QtScreens>(waylandKeyWindowGeometry(std::make_shared<CompositorWindows>()), QtScreens::Pixels::logical);
    }
    void connect(int displays) { QCOMPARE(m_hands.tell(u"displays %1"_s.arg(displays)), QByteArray("done")); }
    void disconnectRight(Screens&) override { connect(1); }
    void connectRight(Screens&) override { connect(2); }
    void disconnectAll(Screens&) override { connect(0); }
    void putKeyWindow(Screens&, const QRect& frame) override
    {
        if (frame != frames().front())
            QCOMPARE(m_hands.tell(u"second %1"_s.arg(m_right->process())), QByteArray("done"));
        QVERIFY((frame == frames().front() ? m_left : m_right)->bringToFront());
    }
    [[nodiscard]] std::vector<QRect> frames() const override
    {
        return { QRect(0, 0, 1920, 1080), compositor() == "kwin"_L1 ? QRect(1920, 0, 1920, 1080) : QRect(1920, 0, 1280, 800) };
    }

    Hands& m_hands;
    std::unique_ptr<Client> m_left;
    std::unique_ptr<Client> m_right;

public:
    explicit TestWaylandScreens(Hands& hands) : m_hands(hands) { }

    /// What can be asked here: on sway in a window and in XWayland on GNOME a display comes back under another name, and KWin and GNOME
    /// always keep one.
    static QStringList functions()
    {
        QStringList possible { u"everyDisplayHasItsFrameAndANumberOfItsOwn"_s, u"theMainDisplayHoldsTheWindowWithTheKeyboard"_s,
            u"withoutSuchAWindowThePrimaryDisplayIsTheMainOne"_s, u"withTheWindowsDisplayGoneAnotherOneIsTheMainOne"_s };
        if (isSway())
            possible << u"withoutADisplayThereIsNoneAndNoMainOne"_s;
        else if (compositor() == "kwin"_L1)
            possible << u"aDisplayThatComesBackBearsItsOldNumber"_s;
        return possible;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_left = std::make_unique<Client>(m_hands, u"mousepad"_s, QStringList {}, 1);
        m_right = std::make_unique<Client>(m_hands, u"galculator"_s, QStringList {}, 1);
        QVERIFY(m_left->isShown() && m_right->isShown());
    }
    void cleanupTestCase()
    {
        m_left.reset();
        m_right.reset();
    }
};

class TestWaylandScriptRunner : public ScriptRunnerContract {
    Q_OBJECT

    /// On a connection of its own, like the tracker's.
    class OwnRunner final : public ScriptRunner {
    public:
        [[nodiscard]] std::optional<QString> run(const Script& script) override { return m_runner.run(script); }

    private:
        BrowserNamedApplications m_applications { std::make_unique<WaylandRunningApplications>(
            std::make_shared<CompositorWindows>(), OwnApplication()) };
        DesktopScriptRunner m_runner { m_applications };
    };

    std::unique_ptr<ScriptRunner> makeRunner() override { return std::make_unique<OwnRunner>(); }
    QString bringOneToTheFront() override { return m_editor->bringToFront() ? u"Mousepad"_s : QString(); }
    void leaveNothingInFront() override { QCOMPARE(m_hands.tell(u"none"_s), QByteArray("done")); }

    Hands& m_hands;
    std::unique_ptr<Client> m_editor;

public:
    explicit TestWaylandScriptRunner(Hands& hands) : m_hands(hands) { }

private Q_SLOTS:
    void initTestCase()
    {
        m_editor = std::make_unique<Client>(m_hands, u"mousepad"_s, QStringList {}, 1);
        QVERIFY(m_editor->isShown());
    }
    void cleanupTestCase() { m_editor.reset(); }
};

/// GNOME's own setting under its real shell; elsewhere the notification service that Plasma and sway have, played.
class TestWaylandSystemFocus : public SystemFocusContract {
    Q_OBJECT

    std::unique_ptr<SystemFocus> makeFocus() override { return std::make_unique<DesktopSystemFocus>(); }
    void turn(SystemFocus&, bool isOn) override
    {
        if (m_service)
            QVERIFY(m_service->obeys(isOn ? "on" : "off"));
        else
            QVERIFY(setShowBanners(!isOn));
    }

    std::unique_ptr<DoNotDisturb> m_service;

private Q_SLOTS:
    void init()
    {
        if (compositor() == "gnome"_L1) {
            QVERIFY(setShowBanners(true));
            return;
        }
        m_service = std::make_unique<DoNotDisturb>(compositor() == "kwin"_L1 ? u"kde"_s : u"swaync"_s);
        QVERIFY(m_service->isReady());
    }
    void cleanup() { m_service.reset(); }
};

int main(int argc, char** argv)
{
    if (const auto prepared = preparePlatform(); !prepared)
        qFatal("%s", qUtf8Printable(prepared.error().description));
    QGuiApplication application(argc, argv);
    Hands hands;
    TestWaylandOverlayPanels panels(hands);
    TestWaylandScriptRunner scripts(hands);
    TestWaylandSystemFocus focus;
    TestWaylandScreens screens(hands);
    int failures = 0;
    for (QObject* test : std::initializer_list<QObject*> { &panels, &scripts, &focus })
        failures += QTest::qExec(test);
    return failures + QTest::qExec(&screens, QStringList { u"screens"_s } + TestWaylandScreens::functions());
}
#include "test_wayland_desktop.moc"
