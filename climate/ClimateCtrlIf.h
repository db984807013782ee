#pragma once
// What the units tell the climate control: their temperature sensors and
// the state of the cabinet's fan groups.

#include <cstdint>

class ClimateCtrlIf {
public:
    virtual ~ClimateCtrlIf() = default;
    virtual void setSensorFault(std::uint32_t id) = 0;
    virtual void clearSensorFault(std::uint32_t id) = 0;
    // A new sensor of a unit of `funcType`; its id comes back in `id`.
    virtual void addTempSensor(std::uint32_t funcType, std::int32_t setPoint, std::int32_t gain, std::int32_t tau,
                               std::uint32_t* id) = 0;
    virtual void removeTempSensor(std::uint32_t id) = 0;
    // Whole degrees.
    virtual void updateTemperature(std::uint32_t id, std::int32_t degrees) = 0;
    virtual bool isFanGroupConfigured(std::uint32_t cabinetFuncInst, std::uint32_t group) = 0;
    virtual void fanGroupsConnected(std::uint32_t cabinetFuncInst, std::uint8_t statusByte, bool secondScu,
                                    std::uint32_t funcType) = 0;
    virtual void cluPresent(bool present) = 0;
    virtual void fanGroupsFailure(std::uint32_t cabinetFuncInst, std::uint8_t statusByte, bool secondScu,
                                  std::uint32_t funcType) = 0;
    virtual void fanGroupState(std::uint32_t cabinetFuncInst, std::uint32_t group, std::uint32_t state,
                               std::uint32_t funcType) = 0;
};
