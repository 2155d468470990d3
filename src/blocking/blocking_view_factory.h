#pragma once

#include "blocking/motion_settings.h"
#include "platform/overlay_panels.h"

#include <QObject>
#include <QQmlComponent>

#include <memory>

class QQmlEngine;

namespace orvanta {

/// Makes blocking screens for the covers, all from one component, which is compiled with the first. The screens follow the
/// motion preference while they live and share nothing else but their pictures. Owned by main; main thread only.
///
/// A content's item is never deleted while it is being used: not from within its own button's action either. An item that
/// is still there when the factory goes, goes with it.
class BlockingViewFactory : public OverlayContentFactory {
public:
    /// Both outlive the factory.
    BlockingViewFactory(QQmlEngine& engine, MotionPreference& preference);
    ~BlockingViewFactory() override;

    [[nodiscard]] std::unique_ptr<OverlayContent> make() override;

private:
    QQmlEngine& m_engine;
    MotionSettings m_motion;
    std::unique_ptr<QQmlComponent> m_component;
    QObject m_items; ///< parent of all items
};

} // namespace orvanta
