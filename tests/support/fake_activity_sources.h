#pragma once

#include "platform/activity_sources.h"
#include "support/call_log.h"

#include <QHash>

#include <utility>

namespace orvanta::testing {

/// What the doubles below answer; kept by the test, which may change it between two samples.
struct ActivityScene {
    CallLog log; ///< every question, in order

    std::optional<RunningApplication> front;
    std::vector<RunningApplication> running;
    QHash<ScriptId, QString> answers; ///< of scripts; the others give nothing
    std::vector<double> idle;
    std::optional<QByteArray> processes = QByteArray();

    /// Doubles of all the sources, which refer to this scene.
    [[nodiscard]] ActivitySources sources();
};

class SceneApplications final : public RunningApplications {
public:
    explicit SceneApplications(ActivityScene& scene) : m_scene(scene) { }

    [[nodiscard]] std::optional<RunningApplication> frontmost() override
    {
        m_scene.log.add(QStringLiteral("frontmost"));
        return m_scene.front;
    }
    [[nodiscard]] std::vector<RunningApplication> all() override
    {
        m_scene.log.add(QStringLiteral("all"));
        return m_scene.running;
    }
    void hide(const QString& bundleIdentifier) override { m_scene.log.add(QStringLiteral("hide ") + bundleIdentifier); }

private:
    ActivityScene& m_scene;
};

class FakeScriptRunner final : public ScriptRunner {
public:
    explicit FakeScriptRunner(ActivityScene& scene) : m_scene(scene) { }

    [[nodiscard]] std::optional<QString> run(const Script& script) override
    {
        m_scene.log.add(QStringLiteral("script %1").arg(static_cast<int>(script.id)));
        const auto answer = m_scene.answers.constFind(script.id);
        return answer == m_scene.answers.cend() ? std::nullopt : std::optional(*answer);
    }

private:
    ActivityScene& m_scene;
};

class FakeIdleSource final : public IdleSource {
public:
    explicit FakeIdleSource(ActivityScene& scene) : m_scene(scene) { }

    [[nodiscard]] std::vector<double> secondsSinceLastEvents() override
    {
        m_scene.log.add(QStringLiteral("idle"));
        return m_scene.idle;
    }

private:
    ActivityScene& m_scene;
};

class FakeProcessLister final : public ProcessLister {
public:
    explicit FakeProcessLister(ActivityScene& scene) : m_scene(scene) { }

    [[nodiscard]] std::optional<QByteArray> list(double /*leastCpuPercent*/) override
    {
        m_scene.log.add(QStringLiteral("processes"));
        return m_scene.processes;
    }

private:
    ActivityScene& m_scene;
};

inline ActivitySources ActivityScene::sources()
{
    return { .applications = std::make_unique<SceneApplications>(*this),
        .scripts = std::make_unique<FakeScriptRunner>(*this),
        .idle = std::make_unique<FakeIdleSource>(*this),
        .processes = std::make_unique<FakeProcessLister>(*this) };
}

} // namespace orvanta::testing
