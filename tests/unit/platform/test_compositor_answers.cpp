#include "platform/linux/wayland/hyprland_commands.h"
#include "platform/linux/wayland/kwin_feed.h"
#include "platform/linux/wayland/sway_feed.h"

#include <QJsonDocument>
#include <QTest>

#include <array>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

QJsonObject tree(const QByteArray& focus)
{
    return QJsonDocument::fromJson(R"({"id":1,"type":"root","focus":[3],"nodes":[
            {"id":2,"name":"__i3","type":"output","focus":[],"nodes":[{"id":4,"name":"__i3_scratch","type":"workspace","focus":[],"nodes":[],
              "floating_nodes":[{"id":11,"pid":70,"app_id":"hidden","visible":false,"focused":false,"nodes":[],"rect":{"x":0,"y":0,"width":1,"height":1}}]}]},
            {"id":3,"name":"A","type":"output","focus":[5],"nodes":[{"id":5,"type":"workspace","focus":[)"
        + focus + R"(],"nodes":[
              {"id":9,"pid":80,"app_id":null,"window_properties":{"class":"XTerm","instance":"xterm"},"visible":true,"focused":false,"nodes":[],
               "rect":{"x":10,"y":20,"width":300,"height":200}},
              {"id":7,"type":"con","focus":[8],"nodes":[{"id":8,"pid":90,"app_id":"editor","visible":true,"focused":true,"nodes":[]}]}
            ],"floating_nodes":[]}]}]})")
        .object();
}

} // namespace

/// What compositors answer, read without one.
class TestCompositorAnswers : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void swaysWindowsAreFoundWhereverTheyStandOldestFirst()
    {
        const auto windows = swayWindows(tree("9"));
        QCOMPARE(windows.size(), std::size_t(3));
        QCOMPARE(windows[0].traits.className, QByteArray("editor"));
        QCOMPARE(windows[0].traits.process, pid_t(90));
        QVERIFY(windows[0].isActive);
        QCOMPARE(windows[1].traits.className, QByteArray("XTerm"));
        QCOMPARE(windows[1].traits.instanceName, QByteArray("xterm"));
        QCOMPARE(windows[1].frame, QRect(10, 20, 300, 200));
        QVERIFY(windows[2].isHidden);
    }

    void swaysFrontIsTheFirstInTheOrderOfFocus()
    {
        QCOMPARE(swayFront(tree("9, 7"))->handle, u"9"_s);
        QCOMPARE(swayFront(tree("7, 9"))->handle, u"8"_s);
        QVERIFY(!swayFront(tree("")).has_value());
        QVERIFY(!swayFront({}).has_value());
    }

    void whatIsNoAnswerHoldsNoWindows()
    {
        QVERIFY(swayWindows({}).empty());
        const QByteArray other = "{\"nodes\":\"none\",\"pid\":\"1\"}";
        QVERIFY(swayWindows(QJsonDocument::fromJson(other).object()).empty());
    }

    void hyprlandMovesEachWindowOfTheApplicationAway()
    {
        const std::array ids { u"editor"_s };
        const QByteArray clients = "[{\"address\":\"0x1\",\"class\":\"editor\"},{\"address\":\"0x2\",\"class\":\"other\"},"
                                   "{\"address\":\"0x3\",\"class\":\"editor\"}]";
        QCOMPARE(hyprlandHidingCommand(clients, ids),
            QByteArray("[[BATCH]]dispatch movetoworkspacesilent special:orvanta,address:0x1;"
                       "dispatch movetoworkspacesilent special:orvanta,address:0x3;"));
        QCOMPARE(hyprlandHidingCommand("[]", ids), QByteArray());
        QCOMPARE(hyprlandHidingCommand("unknown request", ids), QByteArray());
    }

    void kwinsScriptsCallBackTheOneThatLoadedThem()
    {
        const QByteArray windows = kwinWindowsScript(":1.5", "/here");
        QVERIFY(windows.contains("var service = \":1.5\";"));
        QVERIFY(windows.contains("var path = \"/here\";"));
        QVERIFY(!windows.contains('@'));
        const QByteArray hiding = kwinHidingScript(":1.5", "/here", { u"{a}"_s, u"{\"b"_s });
        const QByteArray handles = "var handles = [\"{a}\",\"{\\\"b\"];";
        QVERIFY2(hiding.contains(handles), hiding.constData());
        QVERIFY(!hiding.contains('@'));
    }
};

QTEST_GUILESS_MAIN(TestCompositorAnswers)
#include "test_compositor_answers.moc"
