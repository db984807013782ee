#pragma once
// The temperature sensors that take part in the climate regulation, in the
// order in which they were registered: several sensors of one client (hwId)
// take the temperatures of its measurement in that order.

#include "climate/TempSensorElement.h"
#include "frame/EC_LinkedList.h"
#include "frame/EC_LinkedListIterator.h"

#include <cstdint>
#include <memory>
#include <span>

class TempSensorList {
public:
    void addTempSensor(std::uint32_t funcType, std::int32_t placement, std::int32_t setPointTenths,
                       std::int16_t coolingGain, std::int16_t timeConstant, std::uint32_t id, std::uint32_t hwId);
    void removeTempSensor(std::uint32_t id);
    void removeTempSensorsOfClient(std::uint32_t hwId);
    // The n-th sensor of the client takes the n-th temperature (tenths);
    // true when the client has as many sensors as temperatures came.
    bool updateTemperatures(std::uint32_t hwId, std::span<const std::int32_t> tenths);
    void updateTemperature(std::uint32_t id, std::int32_t tenths);
    void setSensorFault(std::uint32_t id);
    void clearSensorFault(std::uint32_t id);
    // The end of a sensor's supervision period; false when there is no such
    // sensor (any more).
    bool checkSensorStatus(std::uint32_t id);
    void updatePlacementFactors(std::int32_t cbu, std::int32_t psu, std::int32_t rax, std::int32_t ru, std::int32_t tx,
                                std::int32_t du);

    TempSensorElement* find(std::uint32_t id);
    std::uint32_t countOfClient(std::uint32_t hwId);
    std::uint32_t count() const { return m_sensors.count(); }

    // Visits every sensor in list order; the visit may not change the list.
    template <typename Visit>
    void forEach(Visit&& visit)
    {
        EC_LinkedListIterator<std::unique_ptr<TempSensorElement>> walk(m_sensors);
        while (std::unique_ptr<TempSensorElement>* sensor = walk.next()) visit(**sensor);
    }

private:
    static void handleTempSensorUpdate(TempSensorElement* element, std::int32_t tenths);
    void removeWhere(bool (*matches)(const TempSensorElement&, std::uint32_t), std::uint32_t value);

    EC_LinkedList<std::unique_ptr<TempSensorElement>> m_sensors;
};
