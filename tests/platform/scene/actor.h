#pragma once

#include <platform/scene/scene.h>
#include <platform/scene/virtual_object.h>

#include <functional>
#include <string>
#include <vector>

/// The names of what a frame has found to draw.
inline std::vector<std::string> getVisible(const P_Scene& scene)
{
    std::vector<std::string> names;
    for (const P_VirtualObject* mesh : scene.getVisibleMeshes())
    {
        names.emplace_back(mesh->getName().c_str());
    }
    return names;
}

/// Writes down what the scene calls, and does what a test wants done during the call.
class Actor : public P_VirtualObject
{
public:
    Actor(std::vector<std::string>& calls, const std::string& name) : m_calls(calls) { setName(name.c_str()); }

    std::function<void()> m_onAlways;
    std::function<void()> m_onVisible;
    bool m_bForcesItselfInView = false;

protected:
    bool executeAlways() override
    {
        const bool forces = m_bForcesItselfInView;
        note("always ", m_onAlways);
        return forces;
    }
    void executeVisible() override { note("visible ", m_onVisible); }
    void linkToScene() override
    {
        P_VirtualObject::linkToScene();
        note("link ", {});
    }

private:
    /// The action may be the end of this object.
    void note(const char* what, std::function<void()> action)
    {
        m_calls.push_back(what + std::string(getName().c_str()));
        if (action)
        {
            action();
        }
    }

    std::vector<std::string>& m_calls;
};
