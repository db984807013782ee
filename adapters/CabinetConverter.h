#pragma once
// The cabinet interface's records as the core's: a cabinet configuration
// becomes the climate record and the cabinet's identity.

#include "adapters/CmiSignals.h"
#include "cabinet/ProductData.h"
#include "climate/ClimateCfg.h"

namespace cabinet_converter {

ClimateCfg climateCfgOf(const cmi::CMI_CABINET_CONFIG_S& config);
ProductData productDataOf(const cmi::CMI_CABINET_CONFIG_S& config);
ProductData productDataOf(const cmi::CMI_UPDATE_PRODUCT_DATA_REQ_S& request);
// A fixed text field: up to its first NUL, never past its end.
std::string textOf(const char* field, std::size_t size);

} // namespace cabinet_converter
