#pragma once
// One cabinet's four fan groups as the configuration and the hardware see
// them, and the faults that follow when the two disagree: a configured group
// the hardware lacks (14006 on the cabinet), a failed group (21501) and a
// disconnected one (21502) on the fan group object.

#include <array>
#include <cstdint>

class FaultsRegisterIf;

struct FanGroupRecord {
    bool failure = false;
    bool supported = false;
    bool connected = true;
    bool configured = false;
    bool external = false;
    std::uint32_t funcType = 16;
    std::uint32_t funcInst = 0;
    std::uint32_t cabinet = 0;
};

class CabinetFanGroups {
public:
    static constexpr std::uint32_t kGroups = 4;
    static constexpr std::uint32_t kExternalFailureDelayMs = 5000;

    explicit CabinetFanGroups(FaultsRegisterIf* faults) : m_pFaultsRegister(faults) {}

    // Group 1 to 4; the caller checks the number.
    FanGroupRecord& group(std::uint32_t number) { return m_fanGroup[number - 1]; }
    const FanGroupRecord& group(std::uint32_t number) const { return m_fanGroup[number - 1]; }
    std::uint32_t cabinetId() const { return m_cabinetId; }
    void setCabinetId(std::uint32_t cabinetId) { m_cabinetId = cabinetId; }
    bool statusReceived() const { return m_statusReceived; }
    void setStatusReceived(bool received) { m_statusReceived = received; }
    bool holds(std::uint32_t funcInst) const;
    bool anyConfigured() const;

    void checkConsistency();
    void checkHwError();
    void checkDisconnected();

private:
    FaultsRegisterIf* m_pFaultsRegister;
    std::array<FanGroupRecord, kGroups> m_fanGroup{};
    std::uint32_t m_cabinetId = static_cast<std::uint32_t>(-1);
    bool m_statusReceived = false;
};
