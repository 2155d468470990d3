#include "blocking/blocking_view_factory.h"

#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>

#include <utility>

namespace orvanta {

using namespace Qt::StringLiterals;

namespace {

constexpr const char* reduceMotion = "reduceMotion";
constexpr const char* acknowledgeable = "acknowledgeable";

/// One blocking screen. Takes the button's action with it when it goes.
class BlockingViewContent : public QObject, public OverlayContent {
    Q_OBJECT

public:
    explicit BlockingViewContent(QQuickItem& item) : m_item(&item) { }

    ~BlockingViewContent() override
    {
        if (!m_item)
            return;
        m_item->setParentItem(nullptr);
        m_item->deleteLater();
    }

    [[nodiscard]] QQuickItem& item() override { return *m_item; }

    void setAcknowledge(std::optional<Callback<>> acknowledge) override
    {
        m_item->setProperty(acknowledgeable, acknowledge.has_value());
        if (!acknowledge)
            return;
        m_acknowledge = std::make_shared<Callback<>>(std::move(*acknowledge));
        connect(m_item, SIGNAL(acknowledged()), this, SLOT(run()));
    }

private Q_SLOTS:
    void run()
    {
        // The action may be what ends this content.
        const auto acknowledge = m_acknowledge;
        (*acknowledge)();
    }

private:
    QPointer<QQuickItem> m_item;
    std::shared_ptr<Callback<>> m_acknowledge;
};

} // namespace

BlockingViewFactory::BlockingViewFactory(QQmlEngine& engine, MotionPreference& preference) : m_engine(engine), m_motion(preference) { }

BlockingViewFactory::~BlockingViewFactory() = default;

std::unique_ptr<OverlayContent> BlockingViewFactory::make()
{
    if (!m_component)
        m_component = std::make_unique<QQmlComponent>(&m_engine, QUrl(u"qrc:/qt/qml/Orvanta/Blocking/BlockingView.qml"_s));
    QObject* made = m_component->createWithInitialProperties({
        { QString::fromLatin1(reduceMotion), m_motion.reduceMotion() },
        { QString::fromLatin1(acknowledgeable), false },
    });
    auto* item = qobject_cast<QQuickItem*>(made);
    if (!item)
        qFatal("The blocking screen, a part of this program, cannot be made: %s", qUtf8Printable(m_component->errorString()));

    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    item->setParent(&m_items);
    QObject::connect(
        &m_motion, &MotionSettings::reduceMotionChanged, item, [this, item] { item->setProperty(reduceMotion, m_motion.reduceMotion()); });
    return std::make_unique<BlockingViewContent>(*item);
}

} // namespace orvanta

#include "blocking_view_factory.moc"
