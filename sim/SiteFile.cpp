#include "sim/SiteFile.h"

#include "hwu/PpMessages.h"
#include "sim/SimScu.h"

#include <tinyxml.h>

#include <charconv>
#include <cstring>
#include <fstream>
#include <sstream>
#include <vector>

namespace sim {

namespace {

// Why a site was refused, with the line of the element at fault.
struct SiteError {
    int line;
    std::string reason;
};

// A whole number in decimal, or in hex after "0x"; nothing else.
bool parseNumber(const char* text, std::int64_t& value)
{
    if (text == nullptr || *text == '\0') return false;
    const char* end = text + std::strlen(text);
    int base = 10;
    const char* start = text;
    bool negative = false;
    if (*start == '-') {
        negative = true;
        ++start;
    }
    if (end - start > 2 && start[0] == '0' && (start[1] == 'x' || start[1] == 'X')) {
        base = 16;
        start += 2;
    }
    std::uint64_t magnitude = 0;
    const auto result = std::from_chars(start, end, magnitude, base);
    if (result.ec != std::errc() || result.ptr != end || magnitude > 0xFFFFFFFFull) return false;
    value = negative ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    return true;
}

std::int64_t numberAttribute(const TiXmlElement& element, const char* name, std::int64_t low, std::int64_t high)
{
    const char* text = element.Attribute(name);
    if (text == nullptr) throw SiteError{element.Row(), std::string("<") + element.Value() + "> needs " + name};
    std::int64_t value = 0;
    if (!parseNumber(text, value) || value < low || value > high)
        throw SiteError{element.Row(), std::string(name) + "=\"" + text + "\" is not a number from " +
                                           std::to_string(low) + " to " + std::to_string(high)};
    return value;
}

void readText(const TiXmlElement& element, const char* name, std::size_t size, std::string& field)
{
    const char* text = element.Attribute(name);
    if (text == nullptr) return;
    if (std::strlen(text) > size)
        throw SiteError{element.Row(), std::string(name) + " is longer than " + std::to_string(size) + " characters"};
    field = text;
}

void readProduct(const TiXmlElement& element, ProductStrings& product)
{
    readText(element, "number", pp::kProductNumberSize, product.productNumber);
    readText(element, "revision", pp::kRevStateSize, product.revState);
    readText(element, "name", pp::kProductNameSize, product.productName);
    readText(element, "date", pp::kProductionDateSize, product.productionDate);
    readText(element, "serial", pp::kSerialNumberSize, product.serialNumber);
}

void readValue(const TiXmlElement& element, SimUnit& unit)
{
    const char* name = element.Attribute("name");
    if (name == nullptr) throw SiteError{element.Row(), "<value> needs name"};
    const auto value = numberAttribute(element, "value", INT32_MIN, INT32_MAX);
    if (!unit.set(name, static_cast<std::int32_t>(value)))
        throw SiteError{element.Row(), std::string("a ") + unitTypeName(unit.type()) + " has no value named " + name};
}

void readUnit(const TiXmlElement& element, SimCabinet& cabinet)
{
    const char* typeName = element.Attribute("type");
    const auto type = typeName != nullptr ? unitTypeFromName(typeName) : std::nullopt;
    if (!type) throw SiteError{element.Row(), "<unit> needs type, one of SCU, SAU, CLU, PSU, BFU, PDU"};
    const auto port = static_cast<std::uint16_t>(numberAttribute(element, "port", 1, 2));
    const auto address = static_cast<std::uint8_t>(numberAttribute(element, "address", 0, 255));
    SimUnit* unit = cabinet.addUnit(*type, port, address);
    if (unit == nullptr)
        throw SiteError{element.Row(), "port " + std::to_string(port) + " address " + std::to_string(address) +
                                           " has a unit already"};
    if (element.Attribute("bootMs") != nullptr)
        unit->setBootMs(static_cast<std::uint32_t>(numberAttribute(element, "bootMs", 0, 600000)));
    if (element.Attribute("startFlag") != nullptr) unit->setStartFlag(numberAttribute(element, "startFlag", 0, 1) != 0);
    for (const TiXmlElement* child = element.FirstChildElement(); child; child = child->NextSiblingElement()) {
        const std::string tag = child->Value();
        if (tag == "product") readProduct(*child, unit->product());
        else if (tag == "cabinet" && *type == UnitType::SCU) readProduct(*child, static_cast<SimScu*>(unit)->cabinet());
        else if (tag == "value") readValue(*child, *unit);
        else throw SiteError{child->Row(), "<" + tag + "> does not belong in a " + unitTypeName(*type)};
    }
}

// `count` whole numbers from `low` to `high` separated by commas, or
// nothing when the attribute is not there.
std::vector<double> numberList(const TiXmlElement& element, const char* name, std::size_t count, int low, int high,
                               const char* example)
{
    const char* text = element.Attribute(name);
    if (text == nullptr) return {};
    const SiteError refused{element.Row(), std::string(name) + " needs " + std::to_string(count) +
                                               " whole numbers from " + std::to_string(low) + " to " +
                                               std::to_string(high) + ", like " + example};
    std::vector<double> numbers;
    std::istringstream in(text);
    for (std::string item; std::getline(in, item, ',');) {
        const bool negative = !item.empty() && item[0] == '-';
        const std::string digits = negative ? item.substr(1) : item;
        if (numbers.size() == count || digits.empty() || digits.size() > 3 ||
            digits.find_first_not_of("0123456789") != std::string::npos)
            throw refused;
        const int number = (negative ? -1 : 1) * std::stoi(digits);
        if (number < low || number > high) throw refused;
        numbers.push_back(number);
    }
    if (numbers.size() != count || (text[0] != '\0' && text[std::strlen(text) - 1] == ',')) throw refused;
    return numbers;
}

void readFanCurve(const TiXmlElement& element, ThermalParameters& thermal)
{
    const std::vector<double> curve = numberList(element, "fanCurvePercent", 5, 0, 100, "0,25,50,75,100");
    for (std::size_t i = 0; i < curve.size(); ++i) thermal.fanCurve[i] = curve[i] / 100.0;
}

void readLoad(const TiXmlElement& element, PlantParameters& parameters)
{
    LoadParameters load;
    load.port = static_cast<std::uint16_t>(
        element.Attribute("port") != nullptr ? numberAttribute(element, "port", 1, 2) : 1);
    load.pduAddress = static_cast<std::uint8_t>(numberAttribute(element, "pdu", 0, 255));
    load.efuse = static_cast<std::uint32_t>(numberAttribute(element, "efuse", 1, 16));
    load.watts = static_cast<double>(numberAttribute(element, "watts", 0, 100000));
    parameters.loads.push_back(load);
}

void readOutage(const TiXmlElement& element, PlantParameters& parameters)
{
    constexpr std::int64_t kYearS = 366LL * 24 * 3600;
    OutageParameters outage;
    outage.startS = static_cast<std::uint64_t>(numberAttribute(element, "startS", 0, 100 * kYearS));
    outage.durationS = static_cast<std::uint64_t>(numberAttribute(element, "durationS", 1, kYearS));
    if (element.Attribute("repeatS") != nullptr) {
        outage.repeatS = static_cast<std::uint64_t>(numberAttribute(element, "repeatS", 1, kYearS));
        if (outage.repeatS <= outage.durationS)
            throw SiteError{element.Row(), "an outage must end before it repeats (repeatS above durationS)"};
    }
    parameters.outages.push_back(outage);
}

// Whole numbers in the units named; each attribute is optional.
void readPlant(const TiXmlElement& element, SimCabinet& cabinet)
{
    PlantParameters parameters;
    const auto optional = [&element](const char* name, std::int64_t low, std::int64_t high, double& into,
                                     double scale) {
        if (element.Attribute(name) != nullptr) into = static_cast<double>(numberAttribute(element, name, low, high)) * scale;
    };
    double blocks = parameters.battery.blocks;
    double mains = 1.0;
    optional("ambientC", -60, 70, parameters.thermal.ambientC, 1.0);
    optional("ambientSwingC", 0, 40, parameters.thermal.ambientSwingC, 1.0);
    optional("heatCapacityJPerK", 1000, 10000000, parameters.thermal.heatCapacityJPerK, 1.0);
    optional("wallConductanceWPerK", 0, 10000, parameters.thermal.wallConductanceWPerK, 1.0);
    optional("airflowPerGroupLPerS", 0, 10000, parameters.thermal.airflowPerGroupM3PerS, 0.001);
    optional("cluAirflowLPerS", 0, 10000, parameters.thermal.cluAirflowM3PerS, 0.001);
    optional("heaterW", 0, 10000, parameters.thermal.heaterW, 1.0);
    readFanCurve(element, parameters.thermal);
    parameters.thermal.ambientProfileC =
        numberList(element, "ambientProfileC", 24, -60, 70, "14,13,13,12,12,13,15,18,21,24,26,28,29,30,30,29,28,26,23,20,18,17,16,15");
    optional("hotSpotC", 0, 50, parameters.hotSpotOffsetC, 1.0);
    optional("psuFullLoadRiseC", 0, 50, parameters.psuFullLoadRiseC, 1.0);
    optional("hotSpotTimeConstantS", 1, 100000, parameters.hotSpotTimeConstantS, 1.0);
    optional("batteryTimeConstantS", 1, 1000000, parameters.batteryTimeConstantS, 1.0);
    optional("loadW", 0, 100000, parameters.electrical.loadW, 1.0);
    optional("loadSwingPercent", 0, 100, parameters.loadSwingPercent, 1.0);
    optional("disconnectCentivolt", 0, 10000, parameters.electrical.disconnectV, 0.01);
    optional("reconnectCentivolt", 0, 10000, parameters.electrical.reconnectV, 0.01);
    optional("batteryAh", 1, 100000, parameters.battery.capacityAh, 1.0);
    optional("batteryBlocks", 1, 40, blocks, 1.0);
    optional("batteryChargePercent", 0, 100, parameters.battery.stateOfCharge, 0.01);
    optional("batteryMilliohm", 1, 100000, parameters.battery.internalOhm, 0.001);
    optional("batteryChargeEfficiencyPercent", 1, 100, parameters.battery.chargeEfficiency, 0.01);
    optional("psuCurrentLimitA", 1, 1000, parameters.psu.currentLimitA, 1.0);
    optional("psuDroopMilliohm", 1, 100000, parameters.psu.droopOhm, 0.001);
    optional("psuSetPointCentivolt", 0, 10000, parameters.psu.setPointV, 0.01);
    optional("psuEfficiencyPercent", 1, 100, parameters.psu.efficiency, 0.01);
    optional("mains", 0, 1, mains, 1.0);
    parameters.battery.blocks = static_cast<std::uint32_t>(blocks);
    for (const TiXmlElement* child = element.FirstChildElement(); child; child = child->NextSiblingElement()) {
        const std::string tag = child->Value();
        if (tag == "load") readLoad(*child, parameters);
        else if (tag == "outage") readOutage(*child, parameters);
        else throw SiteError{child->Row(), "<" + tag + "> does not belong in <plant>"};
    }
    cabinet.plant = std::make_unique<Plant>(parameters);
    cabinet.plant->electrical().setMains(mains != 0.0);
}

void readSite(const TiXmlElement& root, SimCabinet& cabinet)
{
    if (std::string(root.Value()) != "site") throw SiteError{root.Row(), "the root element must be <site>"};
    for (const TiXmlElement* child = root.FirstChildElement(); child; child = child->NextSiblingElement()) {
        const std::string tag = child->Value();
        if (tag == "unit") readUnit(*child, cabinet);
        else if (tag == "bus")
            cabinet.busTimeoutMs = static_cast<std::uint32_t>(numberAttribute(*child, "timeoutMs", 0, 60000));
        else if (tag == "plant") readPlant(*child, cabinet);
        else throw SiteError{child->Row(), "<" + tag + "> does not belong in <site>"};
    }
}

} // namespace

bool SiteFile::parse(const std::string& text, const std::string& name, SimCabinet& cabinet, std::string& error)
{
    TiXmlDocument document;
    document.Parse(text.c_str());
    if (document.Error()) {
        error = name + ":" + std::to_string(document.ErrorRow()) + ": " + document.ErrorDesc();
        return false;
    }
    if (document.RootElement() == nullptr) {
        error = name + ":1: no <site> element";
        return false;
    }
    try {
        readSite(*document.RootElement(), cabinet);
    } catch (const SiteError& refused) {
        error = name + ":" + std::to_string(refused.line) + ": " + refused.reason;
        for (SimUnit* unit : cabinet.units()) cabinet.removeUnit(unit->port(), unit->address());
        cabinet.plant.reset();
        return false;
    }
    return true;
}

bool SiteFile::load(const std::string& path, SimCabinet& cabinet, std::string& error)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = path + ": cannot be read";
        return false;
    }
    std::ostringstream text;
    text << file.rdbuf();
    return parse(text.str(), path, cabinet, error);
}

} // namespace sim
