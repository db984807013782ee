#pragma once
// A world on the virtual clock with the simulated bus server and a core
// process that talks to it through the real PP handler. A test gives the
// core a script; the script runs inside the process, as a unit would.

#include "frame/HuntService.h"
#include "frame/OsService.h"
#include "frame/SignalDispatcher.h"
#include "hwu/PpCommunicationService.h"
#include "hwu/WLPpCommunicationHandler.h"
#include "platform/WLHuntHandler.h"
#include "platform/WLOsHandler.h"
#include "sim/A4ciSimServer.h"
#include "sim/SimCabinet.h"
#include "sim/SimScu.h"

#include "ose/TestWorld.h"

#include <functional>

class PpBusHarness : public ose::testing::TestWorld {
protected:
    using Script = std::function<void(WLPpCommunicationHandler& pp, SignalDispatcher& dispatcher)>;

    void startServer() { sim::A4ciSimServer::start(world(), node(), m_cabinet); }

    // Runs `script` in a core process and the world until it is idle.
    void runCore(Script script)
    {
        spawn("SSC_THREAD", [script = std::move(script)] {
            struct ServicesReset {
                ~ServicesReset()
                {
                    PpCommunicationService::setHandler(nullptr);
                    HuntService::setHandler(nullptr);
                    OsService::setHandler(nullptr);
                }
            } reset;
            WLOsHandler os;
            OsService::setHandler(&os);
            WLHuntHandler hunt;
            HuntService::setHandler(&hunt);
            SignalDispatcher dispatcher;
            WLPpCommunicationHandler pp(&dispatcher);
            PpCommunicationService::setHandler(&pp);
            script(pp, dispatcher);
        });
        world().runUntilIdle();
    }

    sim::SimUnit& addUnit(sim::UnitType type, std::uint16_t port, std::uint8_t address)
    {
        sim::SimUnit* unit = m_cabinet.addUnit(type, port, address);
        EXPECT_NE(unit, nullptr);
        return *unit;
    }

    sim::SimCabinet m_cabinet;
};
