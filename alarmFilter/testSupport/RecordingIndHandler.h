#pragma once
// The management client's side of the indications, as lines: kind, fault
// id, ldn and class/external id; a fault adds its text in quotes, and marks
// one that would not be stored for a client that comes later.

#include "froBl/froMgmtSwU/export/IndHandlerApi.h"
#include "froBl/froMgmtSwU/export/froTypes.h"

#include <string>
#include <vector>

class RecordingIndHandler : public IndHandlerApi {
public:
    void init() override {}
    bool isAttached() const override { return true; }
    void handleSignal(ose::Signal*) override {}
    void sendFault(std::uint32_t froId, std::uint32_t froType, const std::string& ldn, std::int32_t specificProblem,
                   const std::string& faultDescription, const std::vector<std::string>& additionalData,
                   std::int32_t eventId, bool store) override
    {
        std::string line = head("fault", froId, froType, ldn, specificProblem) + " '" + faultDescription + "'";
        if (!additionalData.empty() || eventId != 0) line += " with extras";
        if (!store) line += " unstored";
        lines.push_back(line);
    }
    // The alarm filters send neither of these.
    void sendParameterChange(std::uint32_t, std::uint32_t, const std::string&, const Attributes&) override {}
    void sendEvent(std::uint32_t, std::uint32_t, const std::string&, std::int32_t, const Attributes&) override {}
    void sendFaultCeased(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                         std::int32_t specificProblem) override
    {
        lines.push_back(head("cease", froId, froType, ldn, specificProblem));
    }
    // The lines sent since the last call.
    std::vector<std::string> take()
    {
        std::vector<std::string> taken;
        taken.swap(lines);
        return taken;
    }

    std::vector<std::string> lines;

private:
    static std::string head(const char* kind, std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                            std::int32_t id)
    {
        return std::string(kind) + " " + std::to_string(id) + " " + ldn + " " +
               std::string(fro_types::className(froType)) + "/" + std::to_string(froId);
    }
};
