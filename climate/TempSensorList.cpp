#include "climate/TempSensorList.h"

#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "ose/Format.h"

using namespace ssc_trace;

void TempSensorList::addTempSensor(std::uint32_t funcType, std::int32_t placement, std::int32_t setPointTenths,
                                   std::int16_t coolingGain, std::int16_t timeConstant, std::uint32_t id,
                                   std::uint32_t hwId)
{
    auto element =
        std::make_unique<TempSensorElement>(setPointTenths, coolingGain, timeConstant, placement, id, hwId, funcType);
    if (funcType != func_type::kScu)
        SSC_TRACE(climateGroup(), kInfo, "TempSensor on %s, ID %d, max temp desired = %s[C].", func_type::text(funcType),
                  static_cast<int>(id), ose::floatToString(element->setPoint()).c_str());
    m_sensors.addLast(std::move(element));
}

void TempSensorList::removeWhere(bool (*matches)(const TempSensorElement&, std::uint32_t), std::uint32_t value)
{
    EC_LinkedListIterator<std::unique_ptr<TempSensorElement>> walk(m_sensors);
    while (std::unique_ptr<TempSensorElement>* sensor = walk.next()) {
        if (!matches(**sensor, value)) continue;
        SSC_TRACE(climateGroup(), kInfo, "TempSensor on %s, ID %d removed.", func_type::text((*sensor)->funcType()),
                  static_cast<int>((*sensor)->id()));
        walk.removeCurrent();
    }
}

void TempSensorList::removeTempSensor(std::uint32_t id)
{
    removeWhere([](const TempSensorElement& sensor, std::uint32_t wanted) { return sensor.id() == wanted; }, id);
}

void TempSensorList::removeTempSensorsOfClient(std::uint32_t hwId)
{
    removeWhere([](const TempSensorElement& sensor, std::uint32_t wanted) { return sensor.hwId() == wanted; }, hwId);
}

bool TempSensorList::updateTemperatures(std::uint32_t hwId, std::span<const std::int32_t> tenths)
{
    std::size_t sensors = 0;
    forEach([&](TempSensorElement& sensor) {
        if (sensor.hwId() != hwId) return;
        if (sensors < tenths.size()) handleTempSensorUpdate(&sensor, tenths[sensors]);
        ++sensors;
    });
    return sensors == tenths.size();
}

void TempSensorList::updateTemperature(std::uint32_t id, std::int32_t tenths)
{
    TempSensorElement* sensor = find(id);
    if (sensor == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "TempSensor with ID %d not found. Temperature not updated.",
                  static_cast<int>(id));
        return;
    }
    handleTempSensorUpdate(sensor, tenths);
}

void TempSensorList::setSensorFault(std::uint32_t id)
{
    if (TempSensorElement* sensor = find(id)) sensor->setSensorFault(true);
}

void TempSensorList::clearSensorFault(std::uint32_t id)
{
    if (TempSensorElement* sensor = find(id)) sensor->setSensorFault(false);
}

bool TempSensorList::checkSensorStatus(std::uint32_t id)
{
    TempSensorElement* sensor = find(id);
    if (sensor == nullptr) return false;
    // A period without a temperature takes the sensor's validity away.
    sensor->setValid(sensor->updated());
    sensor->setUpdated(false);
    return true;
}

void TempSensorList::updatePlacementFactors(std::int32_t cbu, std::int32_t psu, std::int32_t rax, std::int32_t ru,
                                            std::int32_t tx, std::int32_t du)
{
    forEach([&](TempSensorElement& sensor) {
        std::int32_t factor = 0;
        switch (sensor.funcType()) {
        case func_type::kCbu: factor = cbu; break;
        case func_type::kPsu: factor = psu; break;
        case func_type::kRax: factor = rax; break;
        case func_type::kRu: factor = ru; break;
        case func_type::kTx: factor = tx; break;
        case func_type::kDu: factor = du; break;
        case func_type::kScu: factor = 0; break;
        default: SSC_TRACE(climateGroup(), kUnexpected, "Temperature sensor defined for unknown HW unit"); break;
        }
        sensor.updatePlacementFactor(factor);
    });
}

std::uint32_t TempSensorList::countOfClient(std::uint32_t hwId)
{
    std::uint32_t sensors = 0;
    forEach([&](TempSensorElement& sensor) { sensors += sensor.hwId() == hwId ? 1 : 0; });
    return sensors;
}

TempSensorElement* TempSensorList::find(std::uint32_t id)
{
    std::unique_ptr<TempSensorElement>* sensor =
        m_sensors.find([id](const std::unique_ptr<TempSensorElement>& row) { return row->id() == id; });
    return sensor != nullptr ? sensor->get() : nullptr;
}

void TempSensorList::handleTempSensorUpdate(TempSensorElement* element, std::int32_t tenths)
{
    if (element == nullptr) {
        SSC_TRACE(climateGroup(), kUnexpected, "NULL-pointer received in handleTempSensorUpdate. Temperature not updated.");
        return;
    }
    if (tenths == TempSensorElement::kUndefinedTenths) {
        SSC_TRACE(climateGroup(), kDetail, "Undefined temperature value received. Temperature is not updated.");
        return;
    }
    element->setTemperature(tenths);
    SSC_TRACE(climateGroup(), kFlow, "TempSensor on %s, ID %d, is updated. Temperature is %s[C].",
              func_type::text(element->funcType()), static_cast<int>(element->id()),
              ose::floatToString(element->temperature()).c_str());
    element->setUpdated(true);
    element->setValid(true);
}
