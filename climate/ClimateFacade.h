#pragma once
// The climate as the cabinet adapter reaches it: the cabinet parameters go on
// to the climate manager, and the regulation's values come back as a report
// of scaled integers, on request or due at a period the client chose.

#include "climate/ClimateFacadeIf.h"
#include "frame/TimerObserverIf.h"

#include <cstdint>

class ClimateFacade : public ClimateFacadeIf, public TimerObserverIf {
public:
    static constexpr TimerType kReportTimer = 6;
    static constexpr std::uint32_t kFastReportMs = 5000;
    static constexpr std::uint32_t kSlowReportMs = 60000;

    ClimateFacade() = default;
    ~ClimateFacade() override;
    ClimateFacade(const ClimateFacade&) = delete;
    ClimateFacade& operator=(const ClimateFacade&) = delete;

    void setEventHandler(ClimateEventIf* handler) override { m_pEventHandler = handler; }
    void setClimateCfg(const ClimateCfg& cfg) override;
    void deleteClimateCfg() override;
    void getClimateReport(ClimateReport* report) override;
    std::uint32_t getClimateSystem() override;
    std::int32_t startAlgorithmParametersReport(std::uint32_t periodicity) override;
    void stopAlgorithmParametersReport(std::int32_t handle) override;

    void timeout(TimerId timerId) override;

private:
    ClimateEventIf* m_pEventHandler = nullptr; // not owned
    // The last handle given out; each report timer takes the next.
    std::int32_t m_timerHandle = 0;
};
