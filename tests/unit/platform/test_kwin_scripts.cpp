#include "platform/linux/wayland/kwin_feed.h"

#include <QJSEngine>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// What KWin's scripts find, as far as ours use it. Each generation has the names of its own alone.
constexpr auto playedKWin = R"(
var calls = [];
function callDBus() { calls.push(Array.prototype.slice.call(arguments)); }

function Signal() { this.listeners = []; }
Signal.prototype.connect = function (listener) { this.listeners.push(listener); };
Signal.prototype.tell = function (argument) { this.listeners.forEach(function (listener) { listener(argument); }); };

var shown = [], inFront = null, added = new Signal(), removed = new Signal(), activated = new Signal();
var workspace = isPlasma6
    ? { windowList: function () { return shown; }, windowAdded: added, windowRemoved: removed, windowActivated: activated }
    : { clientList: function () { return shown; }, clientAdded: added, clientRemoved: removed, clientActivated: activated };
Object.defineProperty(workspace, isPlasma6 ? 'activeWindow' : 'activeClient', { get: function () { return inFront; } });

function open(id, desktopFile, properties) {
    var isMinimised = false;
    var window = {
        internalId: { toString: function () { return '{' + id + '}'; } }, desktopFileName: desktopFile, resourceClass: id, resourceName: id + '-instance',
        windowRole: '', caption: 'A title', pid: 7, skipTaskbar: false, specialWindow: false, frameGeometry: { x: 10.4, y: 20, width: 300.6, height: 200 }
    };
    window.displayChanged = window[isPlasma6 ? 'outputChanged' : 'screenChanged'] = new Signal();
    var minimised = window[isPlasma6 ? 'minimizedChanged' : 'clientMinimized'] = new Signal();
    Object.defineProperty(window, 'minimized', {
        get: function () { return isMinimised; },
        set: function (value) { isMinimised = value; minimised.tell(window); }
    });
    for (var name in properties)
        window[name] = properties[name];
    shown.push(window);
    added.tell(window);
    return window;
}
function close(window) { shown.splice(shown.indexOf(window), 1); removed.tell(window); }
function activate(window) { inFront = window; activated.tell(window); }
)";

/// A KWin of one generation, with one window of the editor's in front and one of XWayland's.
class PlayedKWin {
public:
    explicit PlayedKWin(bool isPlasma6)
    {
        m_engine.globalObject().setProperty(u"isPlasma6"_s, isPlasma6);
        run(playedKWin);
        run("var editor = open('editor', 'org.example.Editor'), terminal = open('terminal', null); inFront = editor;");
    }

    void run(const QByteArray& script)
    {
        const QJSValue result = m_engine.evaluate(QString::fromUtf8(script));
        if (result.isError())
            QFAIL(qPrintable(result.property(u"lineNumber"_s).toString() + u": "_s + result.toString()));
    }

    [[nodiscard]] bool holds(const QString& expression) { return m_engine.evaluate(expression).toBool(); }

    /// What was called on the bus since the last time: each its arguments.
    [[nodiscard]] QJsonArray takeCalls()
    {
        const QJsonArray calls = QJsonDocument::fromJson(m_engine.evaluate(u"JSON.stringify(calls.splice(0))"_s).toString().toUtf8()).array();
        return calls;
    }

private:
    QJSEngine m_engine;
};

const QByteArray service = ":1.5";
const QByteArray path = "/here";

QStringList words(const QJsonValue& call)
{
    QStringList result;
    for (const QJsonValue& argument : call.toArray())
        result << argument.toString();
    return result;
}

QStringList head(const QString& method)
{
    return { QString::fromUtf8(service), QString::fromUtf8(path), u"com.orvanta.Focus.Windows"_s, method };
}

/// What the call tells, having checked whom it tells what.
QJsonObject told(const QJsonValue& call, const QString& method)
{
    const QStringList all = words(call);
    if (all.mid(0, 4) != head(method) || all.size() != 5)
        return {};
    return QJsonDocument::fromJson(all.last().toUtf8()).object();
}

QStringList handles(const QJsonObject& windows)
{
    QStringList result;
    for (const QJsonValue& window : windows["windows"_L1].toArray())
        result << window["handle"_L1].toString();
    return result;
}

} // namespace

/// The scripts that KWin runs for us, in both generations' shape: the names are those of 5.27 and of Plasma 6.
class TestKWinScripts : public QObject {
    Q_OBJECT

    static void generations()
    {
        QTest::addColumn<bool>("isPlasma6");
        QTest::newRow("5.27") << false;
        QTest::newRow("Plasma 6") << true;
    }

private Q_SLOTS:
    void theFirstWordsTellWhatThereIs_data() { generations(); }
    void theFirstWordsTellWhatThereIs()
    {
        QFETCH(const bool, isPlasma6);
        PlayedKWin kwin(isPlasma6);
        kwin.run(kwinWindowsScript(service, path));
        const QJsonArray calls = kwin.takeCalls();
        QCOMPARE(calls.size(), 1);
        const QJsonObject all = told(calls.first(), u"Windows"_s);
        QCOMPARE(handles(all), QStringList({ u"{editor}"_s, u"{terminal}"_s }));
        const QJsonObject editor { { u"handle"_s, u"{editor}"_s }, { u"desktopFile"_s, u"org.example.Editor"_s }, { u"className"_s, u"editor"_s },
            { u"instance"_s, u"editor-instance"_s }, { u"role"_s, QString() }, { u"pid"_s, 7 }, { u"isHidden"_s, false },
            { u"skipsTaskbar"_s, false }, { u"isUntitled"_s, false }, { u"x"_s, 10 }, { u"y"_s, 20 }, { u"width"_s, 301 }, { u"height"_s, 200 } };
        QCOMPARE(all["front"_L1].toObject(), editor);
        QCOMPARE(all["windows"_L1].toArray().first().toObject(), editor);
        QCOMPARE(all["windows"_L1][1]["desktopFile"_L1], QJsonValue(QString()));
    }

    void withNothingInFrontThatIsTold_data() { generations(); }
    void withNothingInFrontThatIsTold()
    {
        QFETCH(const bool, isPlasma6);
        PlayedKWin kwin(isPlasma6);
        kwin.run("inFront = null;");
        kwin.run(kwinWindowsScript(service, path));
        const QJsonObject all = told(kwin.takeCalls().first(), u"Windows"_s);
        QCOMPARE(handles(all).size(), 2);
        QVERIFY(all["front"_L1].isNull());
        kwin.run("activate(null);");
        QVERIFY(told(kwin.takeCalls().first(), u"Activated"_s)["front"_L1].isNull());
    }

    void eachActivationIsToldOnce_data() { generations(); }
    void eachActivationIsToldOnce()
    {
        QFETCH(const bool, isPlasma6);
        PlayedKWin kwin(isPlasma6);
        kwin.run(kwinWindowsScript(service, path));
        (void)kwin.takeCalls();
        for (const char* window : { "terminal", "editor" }) {
            kwin.run(QByteArray("activate(") + window + ");");
            const QJsonArray calls = kwin.takeCalls();
            QCOMPARE(calls.size(), 1);
            QCOMPARE(told(calls.first(), u"Activated"_s)["front"_L1]["handle"_L1].toString(), u"{%1}"_s.arg(QString::fromUtf8(window)));
        }
    }

    void whatOpensClosesMovesAndIsMinimisedIsTold_data() { generations(); }
    void whatOpensClosesMovesAndIsMinimisedIsTold()
    {
        QFETCH(const bool, isPlasma6);
        PlayedKWin kwin(isPlasma6);
        kwin.run(kwinWindowsScript(service, path));
        (void)kwin.takeCalls();

        kwin.run("var late = open('late', 'late', { caption: '', skipTaskbar: true });");
        QJsonObject all = told(kwin.takeCalls().last(), u"Windows"_s);
        QCOMPARE(handles(all), QStringList({ u"{editor}"_s, u"{terminal}"_s, u"{late}"_s }));
        QVERIFY(all["windows"_L1][2]["isUntitled"_L1].toBool());
        QVERIFY(all["windows"_L1][2]["skipsTaskbar"_L1].toBool());

        for (const char* window : { "late", "terminal" }) { // one that was there before, and one that was not
            kwin.run(QByteArray(window) + ".minimized = true;");
            all = told(kwin.takeCalls().last(), u"Windows"_s);
            QVERIFY(all["windows"_L1][window == QByteArray("late") ? 2 : 1]["isHidden"_L1].toBool());
        }

        kwin.run("editor.frameGeometry.x = 2000; editor.displayChanged.tell(editor);");
        all = told(kwin.takeCalls().last(), u"Windows"_s);
        QCOMPARE(all["windows"_L1][0]["x"_L1].toInt(), 2000);

        kwin.run("close(terminal);");
        QCOMPARE(handles(told(kwin.takeCalls().last(), u"Windows"_s)), QStringList({ u"{editor}"_s, u"{late}"_s }));
    }

    void hidingMinimisesThoseThatAreNamedAndSaysSo_data() { generations(); }
    void hidingMinimisesThoseThatAreNamedAndSaysSo()
    {
        QFETCH(const bool, isPlasma6);
        PlayedKWin kwin(isPlasma6);
        kwin.run(kwinHidingScript(service, path, { u"{terminal}"_s, u"{gone}"_s }));
        QVERIFY(kwin.holds(u"terminal.minimized"_s));
        QVERIFY(!kwin.holds(u"editor.minimized"_s));
        const QJsonArray calls = kwin.takeCalls();
        QCOMPARE(calls.size(), 1);
        QCOMPARE(words(calls.first()), head(u"Hidden"_s));
    }
};

QTEST_GUILESS_MAIN(TestKWinScripts)
#include "test_kwin_scripts.moc"
