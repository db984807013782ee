#pragma once
// A world on the virtual clock for tests, with helpers to start processes
// from lambdas and a check that no signal buffer leaked.

#include "ose/Kernel.h"
#include "ose/SignalPool.h"
#include "ose/World.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace ose::testing {

struct Word {
    be_u32 sigNo;
    be_u32 value;
};
OSE_SIGNAL_LAYOUT(Word, 8);

inline Signal* word(SIGSELECT sigNo, std::uint32_t value)
{
    auto* signal = alloc_as<Word>(sigNo);
    signal->value = value;
    return reinterpret_cast<Signal*>(signal);
}

inline std::uint32_t valueOf(const Signal* signal)
{
    const Word* w = signal_cast<Word>(signal);
    return w != nullptr ? static_cast<std::uint32_t>(w->value) : 0xFFFFFFFFu;
}

class TestWorld : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_liveBefore = SignalPool::liveCount();
        m_world = std::make_unique<World>(ClockConfig{});
    }
    void TearDown() override
    {
        m_world.reset();
        EXPECT_EQ(SignalPool::liveCount(), m_liveBefore) << "signal buffers leaked";
    }

    World& world() { return *m_world; }
    Node& node() { return m_world->defaultNode(); }

    PROCESS spawn(Node& on, const std::string& name, std::function<void()> body, OSPRIORITY priority = 16)
    {
        ProcessSpec definition;
        definition.name = name;
        definition.entry = std::move(body);
        definition.priority = priority;
        PROCESS pid = m_world->createProcess(on, definition);
        m_world->start(pid);
        return pid;
    }
    PROCESS spawn(const std::string& name, std::function<void()> body, OSPRIORITY priority = 16)
    {
        return spawn(node(), name, std::move(body), priority);
    }

    std::unique_ptr<World> m_world;
    std::size_t m_liveBefore = 0;
};

} // namespace ose::testing
