#include "adapters/CabinetConverter.h"

#include <cstring>

namespace cabinet_converter {

using namespace cmi;

std::string textOf(const char* field, std::size_t size) { return std::string(field, strnlen(field, size)); }

// The 45 parameters hold the climate record's 43 numbers in its order, with
// the version number first and the door switch among them, which belong to
// the cabinet.
ClimateCfg climateCfgOf(const CMI_CABINET_CONFIG_S& config)
{
    std::array<std::int16_t, ClimateCfg::kNumbers> numbers{};
    std::size_t next = 0;
    for (std::size_t index = 0; index < kCabinetParameters; ++index) {
        if (index == kVersionNumberIndex || index == kDoorSwitchIndex) continue;
        numbers[next++] = config.parameters[index];
    }
    ClimateCfg cfg;
    cfg.setCabinetParameters(ClimateCfg::climateSystemOf(config.climateSystem),
                             ClimateCfg::climateControlModeOf(config.climateControlMode), numbers);
    return cfg;
}

ProductData productDataOf(const CMI_CABINET_CONFIG_S& config)
{
    return ProductData(textOf(config.productNumber, sizeof config.productNumber),
                       textOf(config.productRevision, sizeof config.productRevision),
                       textOf(config.productName, sizeof config.productName),
                       textOf(config.productionDate, sizeof config.productionDate),
                       textOf(config.serialNumber, sizeof config.serialNumber));
}

ProductData productDataOf(const CMI_UPDATE_PRODUCT_DATA_REQ_S& request)
{
    return ProductData(textOf(request.productNumber, sizeof request.productNumber),
                       textOf(request.productRevision, sizeof request.productRevision),
                       textOf(request.productName, sizeof request.productName),
                       textOf(request.productionDate, sizeof request.productionDate),
                       textOf(request.serialNumber, sizeof request.serialNumber));
}

} // namespace cabinet_converter
