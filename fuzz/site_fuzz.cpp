// Site files from outside: any bytes as a site file. A file is loaded whole
// or refused with its line and reason, leaving no unit and no plant behind;
// a loaded plant then runs for a simulated minute and every value it writes
// stays a number within its unit's range.

#include "sim/SimCabinet.h"
#include "sim/SiteFile.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    sim::SimCabinet cabinet;
    cabinet.logCapacity = 0;
    std::string error;
    if (!sim::SiteFile::parse(text, "fuzz", cabinet, error)) {
        if (error.rfind("fuzz:", 0) != 0 || !cabinet.units().empty() || cabinet.plant) std::abort();
        return 0;
    }
    if (!cabinet.plant) return 0;
    cabinet.advancePlant(60 * 1000);
    const double air = cabinet.plant->thermal().airC();
    const double bus = cabinet.plant->electrical().busV();
    if (!std::isfinite(air) || !std::isfinite(bus) || bus < 0) std::abort();
    const double charge = cabinet.plant->electrical().stateOfCharge();
    if (!(charge >= 0.0 && charge <= 1.0)) std::abort();
    return 0;
}
