#include "hwu/PpFrameCodec.h"

#include "frame/SscTrace.h"

#include <algorithm>
#include <type_traits>

using namespace ssc_trace;

namespace {

// Reads big-endian numbers from a received frame. A read beyond the bytes
// received gives 0 and still moves the position, so that the length check at
// the end sees how far the decoder wanted to go.
class Reader {
public:
    Reader(const std::uint8_t* frame, std::uint32_t length) : m_frame(frame), m_length(length) {}

    std::uint8_t u8()
    {
        const std::uint8_t value = m_position < m_length ? m_frame[m_position] : 0;
        ++m_position;
        return value;
    }
    std::int8_t i8() { return static_cast<std::int8_t>(u8()); }
    std::uint16_t u16()
    {
        const std::uint16_t high = u8();
        return static_cast<std::uint16_t>((high << 8) | u8());
    }
    std::int16_t i16() { return static_cast<std::int16_t>(u16()); }
    PpSixteenSet sixteenSet()
    {
        const std::uint16_t word = u16();
        PpSixteenSet set{};
        for (unsigned k = 0; k < 16; ++k) set[k] = static_cast<std::uint16_t>((word >> k) & 1u);
        return set;
    }
    template <std::size_t N>
    void chars(std::array<char, N>& field)
    {
        for (char& c : field) c = static_cast<char>(u8());
    }
    void skip(std::uint32_t count) { m_position += count; }
    void moveTo(std::uint32_t position) { m_position = position; }

    std::uint32_t position() const { return m_position; }
    std::uint32_t length() const { return m_length; }
    bool beyondEnd() const { return m_position > m_length; }

private:
    const std::uint8_t* m_frame;
    std::uint32_t m_length;
    std::uint32_t m_position = 0;
};

// One item of a list answer: id and length byte (which counts itself and
// the id). Where the next item starts is decided by the length byte, except
// that a length below 2 would walk backwards and is read as 2.
struct ItemHead {
    std::uint8_t id;
    std::uint32_t next;
};

ItemHead readItemHead(Reader& reader)
{
    const std::uint32_t start = reader.position();
    const std::uint8_t id = reader.u8();
    const std::uint8_t length = reader.u8();
    return {id, start + std::max<std::uint32_t>(length, 2)};
}

void readProductIdentity(Reader& r, PpProductIdentity& out)
{
    r.chars(out.productNumber);
    r.chars(out.revState);
    r.chars(out.productName);
    r.chars(out.productionDate);
    r.chars(out.serialNumber);
}

void readPsuCapabilities(Reader& r, PpPsuCapabilities& out)
{
    const std::uint8_t flags = r.u8();
    out.outputVoltageControl = (flags & 0x01) != 0;
    out.hotSpot = (flags & 0x02) != 0;
    out.flag2 = (flags & 0x04) != 0;
    out.tempSens = (flags & 0x08) != 0;
    out.flag4 = (flags & 0x10) != 0;
    out.additionalCapabilities = (flags & 0x20) != 0;
    out.controlVoltageLimit1 = r.i16();
    out.controlVoltageLimit2 = r.i16();
    out.setPoint = r.i8();
    out.coolingGain = r.i8();
    out.timeConstant = r.u16();
}

void readPsuMeasurements(Reader& r, PpPsuMeasurements& out)
{
    out.outputVoltage = r.i16();
    out.outputCurrent = r.u16();
    out.load = r.u8();
    out.temperature = r.i8();
}

void readStatusWord(Reader& r, PpStatusWord& out) { out.flags = r.u16(); }

bool readPsuAddCapabilities(Reader& r, PpPsuAddCapabilities& out)
{
    const std::uint8_t count = r.u8();
    for (unsigned i = 0; i < count && !r.beyondEnd(); ++i) {
        const ItemHead item = readItemHead(r);
        switch (item.id) {
        case 1: out.id1 = true; break;
        case 2:
            out.id2 = true;
            out.id2Value = r.u16();
            break;
        case 3: out.id3 = true; break;
        case 4: out.operationalLedNotAvailable = true; break;
        case 5: out.faultLedNotAvailable = true; break;
        default:
            SSC_TRACE(a4ciGroup(), kUnexpected, "Unhandled SCU additional capability with id %d", item.id);
            r.moveTo(item.next);
            break;
        }
    }
    return true;
}

void readBfuCapabilities(Reader& r, PpBfuCapabilities& out)
{
    out.mainLoadDisconnectMin = r.i16();
    out.mainLoadDisconnectMax = r.i16();
    out.priorityLoadDisconnectMin = r.i16();
    out.priorityLoadDisconnectMax = r.i16();
    out.disconnectCeaseMin = r.i16();
    out.disconnectCeaseMax = r.i16();
    out.disconnectTempMin = r.i8();
    out.disconnectTempMax = r.i8();
    out.disconnectCeaseTempMin = r.i8();
    out.disconnectCeaseTempMax = r.i8();
}

void readBfuMeasurements(Reader& r, PpBfuMeasurements& out)
{
    out.systemVoltage = r.i16();
    out.batteryVoltage = r.i16();
    out.batteryCurrent = r.i16();
    out.batteryTemperature = r.i8();
}

void readCluMeasurements(Reader& r, PpCluMeasurements& out)
{
    out.cluSupplyTemp = r.i8();
    out.cluReturnTemp = r.i8();
    out.cluCondenserTemp = r.i8();
    out.cluAmbientTemp = r.i8();
    out.cluIntFanSpeed = r.u8();
    out.cluExtFanSpeed = r.u8();
    out.cluActiveCoolerSpeed = r.u8();
    out.cluCompressorCurrent = r.u8();
    out.cluHeaterCurrent = r.u8();
}

void readScuColdOperation(Reader& r, PpScuAddCapabilities& out)
{
    out.coldOperation = true;
    out.scuColdopMinOnTemp = r.u8();
    out.scuColdopMaxOnTemp = r.u8();
    out.scuColdopMinOffTemp = r.u8();
    out.scuColdopMaxOffTemp = r.u8();
    out.scuHeater1Fg1MinSpeed = r.u8();
    out.scuHeater1Fg1MaxSpeed = r.u8();
    out.scuHeaterFg3MinSpeed = r.u8();
    out.scuHeaterFg3MaxSpeed = r.u8();
    out.scuHeater2Fg1Fan1MinSpeed = r.u8();
    out.scuHeater2Fg1Fan1MaxSpeed = r.u8();
    out.scuHeater2Fg1Fan2MinSpeed = r.u8();
    out.scuHeater2Fg1Fan2MaxSpeed = r.u8();
}

bool readScuAddCapabilities(Reader& r, PpScuAddCapabilities& out)
{
    const std::uint8_t count = r.u8();
    for (unsigned i = 0; i < count && !r.beyondEnd(); ++i) {
        const ItemHead item = readItemHead(r);
        switch (item.id) {
        case 1:
            out.intFanSpeedAtLowTemp = true;
            out.intFanMinLoTempSpeed = r.u8();
            out.intFanMaxLoTempSpeed = r.u8();
            break;
        case 2:
            out.extendedControl = true;
            out.extendedControlIds1To16 = r.u16();
            out.extendedControlIds17To32 = r.u16();
            break;
        case 3: out.extendedStatus = true; break;
        case 4: readScuColdOperation(r, out); break;
        default:
            SSC_TRACE(a4ciGroup(), kUnexpected, "Unhandled SCU additional capability with id %d", item.id);
            r.moveTo(item.next);
            break;
        }
    }
    return true;
}

constexpr unsigned kMaxScuExtStatusItems = 4;

bool readScuExtStatusItem(Reader& r, const ItemHead& item, PpScuExtStatus& out)
{
    switch (item.id) {
    case 0:
        SSC_TRACE(a4ciGroup(), kUnexpected, "setMsgGetExtStatusCfm: Received scuExtStatusId with unknown value: %d",
                  item.id);
        r.moveTo(item.next);
        return true;
    case 1:
        out.fansConnectedRead = true;
        for (unsigned b = 0; b < 4; ++b) {
            const std::uint8_t byte = r.u8();
            for (unsigned f = 0; f < 4; ++f) out.fanConnected[4 * b + f] = ((byte >> f) & 1u) != 0;
        }
        return true;
    case 2:
        out.fanGroupFailureRead = true;
        out.fanGroupFailure = r.u8();
        return true;
    case 3:
        out.externalInputAlarmRead = true;
        out.externalInputAlarm = r.u16();
        return true;
    case 4:
        out.statusRead = true;
        r.skip(1);
        out.status = r.u8();
        return true;
    default:
        SSC_TRACE(a4ciGroup(), kUnexpected,
                  "PpCommunicationHandler::getDeviceData: Unrecognized extended status parameter id %d", item.id);
        return false;
    }
}

bool readScuExtStatus(Reader& r, PpScuExtStatus& out)
{
    const std::uint8_t count = r.u8();
    if (count > kMaxScuExtStatusItems) {
        SSC_TRACE(a4ciGroup(), kUnexpected,
                  "PpCommunicationHandler::getDeviceData: Number of extended status %d exceeds max size %d", count,
                  static_cast<int>(kMaxScuExtStatusItems));
        return false;
    }
    for (unsigned i = 0; i < count && !r.beyondEnd(); ++i) {
        if (!readScuExtStatusItem(r, readItemHead(r), out)) return false;
    }
    return true;
}

void readPduCapabilities(Reader& r, PpPduCapabilities& out)
{
    out.controllable = r.sixteenSet();
    out.secondSet = r.sixteenSet();
    out.thirdSet = r.sixteenSet();
    out.overvoltageRaiseMin = r.i16();
    out.overvoltageRaiseMax = r.i16();
    out.overvoltageCeaseMin = r.i16();
    out.overvoltageCeaseMax = r.i16();
    out.undervoltageRaiseMin = r.i16();
    out.undervoltageRaiseMax = r.i16();
    out.undervoltageCeaseMin = r.i16();
    out.undervoltageCeaseMax = r.i16();
    // Older units answer without the count and have seven e-fuses.
    constexpr std::uint32_t kLongAnswer = 25;
    out.numberOfEfuses = r.length() == kLongAnswer ? r.u8() : 7;
}

void readPduStatus(Reader& r, PpPduStatus& out)
{
    out.efuseOn = r.sixteenSet();
    out.secondSet = r.sixteenSet();
    out.thirdSet = r.sixteenSet();
    out.efuseFault = r.sixteenSet();
    out.fifthSet = r.sixteenSet();
    out.efuseOpenedByRequest = r.sixteenSet();
    r.skip(1);
    out.flags = r.u8();
}

constexpr unsigned kMaxBfuAddCapabilities = 8;

bool readBfuAddCapabilities(Reader& r, PpBfuAddCapabilities& out)
{
    unsigned count = r.u8();
    if (count > kMaxBfuAddCapabilities) {
        SSC_TRACE(a4ciGroup(), kUnexpected,
                  "PpCommunicationHandler::getDeviceData: Number of additional capabilities %d exceeds max size %d, "
                  "extra capability data ignored",
                  static_cast<int>(count), static_cast<int>(kMaxBfuAddCapabilities));
        count = kMaxBfuAddCapabilities;
    }
    for (unsigned i = 0; i < count && !r.beyondEnd(); ++i) {
        const ItemHead item = readItemHead(r);
        if (item.id < 1 || item.id > 8) {
            SSC_TRACE(a4ciGroup(), kUnexpected,
                      "PpCommunicationHandler::getDeviceData: Unrecognized additional capability parameter id %d, "
                      "ignored",
                      item.id);
            r.moveTo(item.next);
            continue;
        }
        out.id[item.id] = true;
        if (item.id == 3) out.batteryCurrentLimit = r.u16();
        if (item.id == 4) out.batteryVoltageLimit = r.i16();
        if (item.id == 5) {
            out.extendedControlIds = r.u16();
            out.extendedStatusIds = r.u16();
        }
    }
    return true;
}

constexpr unsigned kMaxBfuExtStatus = 1;

bool readBfuExtStatus(Reader& r, PpBfuExtStatus& out)
{
    unsigned count = r.u8();
    if (count > kMaxBfuExtStatus) {
        SSC_TRACE(a4ciGroup(), kUnexpected,
                  "PpCommunicationHandler::getDeviceData: Number of extended status %d exceeds max size %d, extra "
                  "status data ignored",
                  static_cast<int>(count), static_cast<int>(kMaxBfuExtStatus));
        count = kMaxBfuExtStatus;
    }
    for (unsigned i = 0; i < count && !r.beyondEnd(); ++i) {
        const ItemHead item = readItemHead(r);
        if (item.id != 1) {
            SSC_TRACE(a4ciGroup(), kUnexpected,
                      "PpCommunicationHandler::getDeviceData: Unrecognized extended status parameter id %d, ignored",
                      item.id);
            r.moveTo(item.next);
            continue;
        }
        out.statusRead = true;
        out.flags = r.u16();
    }
    return true;
}

void readScuCapabilities(Reader& r, PpScuCapabilities& out)
{
    r.skip(1);
    out.availableHw = r.u8();
    out.availableFanGroups = r.u8();
    out.availableExternalInputs = r.u16();
    out.availableControlOutputs = r.u8();
    for (std::int8_t* field :
         {&out.heater1MinOnTemp, &out.heater1MaxOnTemp, &out.heater1MinOffTemp, &out.heater1MaxOffTemp,
          &out.heater2MinOnTemp, &out.heater2MaxOnTemp, &out.heater2MinOffTemp, &out.heater2MaxOffTemp,
          &out.intFanMinLoTemp, &out.intFanMaxLoTemp, &out.intFanMinHiTemp, &out.intFanMaxHiTemp,
          &out.extFanMinLoUpTemp, &out.extFanMaxLoUpTemp, &out.extFanMinHiUpTemp, &out.extFanMaxHiUpTemp,
          &out.extFanMinLoDownTemp, &out.extFanMaxLoDownTemp, &out.extFanMinHiDownTemp, &out.extFanMaxHiDownTemp,
          &out.extFanMinSpeedFault, &out.extFanMaxSpeedFault})
        *field = r.i8();
}

void readScuStatus(Reader& r, PpScuStatus& out)
{
    out.connectedFans = static_cast<std::uint8_t>(r.u8() & 0x0F);
    out.fanGroupFailure = static_cast<std::uint8_t>(r.u8() & 0x0F);
    out.externalInputAlarm = r.u16();
    r.skip(1);
    out.status = r.u8();
}

void readSauCapabilities(Reader& r, PpSauCapabilities& out)
{
    out.availableInPortsA = r.u16();
    out.availableInPortsB = r.u16();
    out.availableOutPorts = r.u8();
}

void readSauStatus(Reader& r, PpSauStatus& out)
{
    out.alarmPortsA = r.u16();
    out.alarmPortsB = r.u16();
    out.flags = r.u8();
}

// Emplaces the record of type T and lets `read` fill it; read returns void
// or bool.
template <typename T, typename Read>
bool decodeInto(PpDeviceData& out, Reader& r, Read read)
{
    T& record = out.emplace<T>();
    if constexpr (std::is_void_v<decltype(read(r, record))>) {
        read(r, record);
        return true;
    } else {
        return read(r, record);
    }
}

bool decodeByConfirm(std::uint8_t confirm, Reader& r, PpDeviceData& out)
{
    using namespace pp;
    switch (static_cast<MessageNo>(confirm - 1)) {
    case CC_HW_PID_REQ:
    case SCU_GET_CABINET_PID_REQ: return decodeInto<PpProductIdentity>(out, r, readProductIdentity);
    case PSU_GET_CAPABILITIES_REQ: return decodeInto<PpPsuCapabilities>(out, r, readPsuCapabilities);
    case PSU_GET_MEASUREMENTS_REQ: return decodeInto<PpPsuMeasurements>(out, r, readPsuMeasurements);
    case PSU_GET_STATUS_REQ: return decodeInto<PpPsuStatus>(out, r, readStatusWord);
    case PSU_GET_ADD_CAPABILITIES_REQ: return decodeInto<PpPsuAddCapabilities>(out, r, readPsuAddCapabilities);
    case BFU_GET_CAPABILITIES_REQ: return decodeInto<PpBfuCapabilities>(out, r, readBfuCapabilities);
    case BFU_GET_MEASUREMENTS_REQ: return decodeInto<PpBfuMeasurements>(out, r, readBfuMeasurements);
    case BFU_GET_STATUS_REQ: return decodeInto<PpBfuStatus>(out, r, readStatusWord);
    case CLU_GET_CAPABILITIES_REQ: return decodeInto<PpCluCapabilities>(out, r, readStatusWord);
    case CLU_GET_MEASUREMENTS_REQ: return decodeInto<PpCluMeasurements>(out, r, readCluMeasurements);
    case CLU_GET_STATUS_REQ: return decodeInto<PpCluStatus>(out, r, readStatusWord);
    case SCU_GET_ADD_CAPABILITIES_REQ: return decodeInto<PpScuAddCapabilities>(out, r, readScuAddCapabilities);
    case SCU_GET_EXT_STATUS_REQ: return decodeInto<PpScuExtStatus>(out, r, readScuExtStatus);
    case PDU_GET_CAPABILITIES_REQ: return decodeInto<PpPduCapabilities>(out, r, readPduCapabilities);
    case PDU_GET_MEASUREMENTS_REQ:
        return decodeInto<PpPduMeasurements>(out, r, [](Reader& rd, PpPduMeasurements& m) { m.systemVoltage = rd.i16(); });
    case PDU_GET_STATUS_REQ: return decodeInto<PpPduStatus>(out, r, readPduStatus);
    case BFU_GET_ADD_CAPABILITIES_REQ: return decodeInto<PpBfuAddCapabilities>(out, r, readBfuAddCapabilities);
    case BFU_GET_EXT_STATUS_REQ: return decodeInto<PpBfuExtStatus>(out, r, readBfuExtStatus);
    case SCU_GET_CAPABILITIES_REQ: return decodeInto<PpScuCapabilities>(out, r, readScuCapabilities);
    case SCU_GET_MEASUREMENTS_REQ:
        return decodeInto<PpScuMeasurements>(out, r, [](Reader& rd, PpScuMeasurements& m) { m.scuTemperature = rd.i8(); });
    case SCU_GET_STATUS_REQ: return decodeInto<PpScuStatus>(out, r, readScuStatus);
    case SAU_GET_CAPABILITIES_REQ: return decodeInto<PpSauCapabilities>(out, r, readSauCapabilities);
    case SAU_GET_STATUS_REQ: return decodeInto<PpSauStatus>(out, r, readSauStatus);
    default:
        SSC_TRACE(a4ciGroup(), kUnexpected, "Unexpected response: 0x%02X, waiting for 0x%02X", confirm, confirm);
        return false;
    }
}

} // namespace

bool PpFrameCodec::decodeAnswer(const std::uint8_t* frame, std::uint32_t length, PpDeviceData& out)
{
    if (frame == nullptr || length == 0) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Unexpected msg length, exp %d, got %d!", 1, static_cast<int>(length));
        return false;
    }
    Reader r(frame, length);
    const std::uint8_t confirm = r.u8();
    r.skip(1); // the sequence number is not checked
    if (!decodeByConfirm(confirm, r, out)) return false;
    if (r.beyondEnd()) {
        SSC_TRACE(a4ciGroup(), kUnexpected, "Unexpected msg length, exp %d, got %d!", static_cast<int>(r.position()),
                  static_cast<int>(length));
        return false;
    }
    return true;
}

namespace {

// Appends big-endian numbers to a request frame. Every request of the
// catalogue fits; a write beyond the frame is dropped and marks the frame
// as too long, so that it is refused instead of cut.
class Writer {
public:
    explicit Writer(PpFrameCodec::Frame& frame) : m_frame(frame) {}

    void u8(std::uint8_t value)
    {
        if (m_length < m_frame.size()) m_frame[m_length] = value;
        ++m_length;
    }
    void i8(std::int8_t value) { u8(static_cast<std::uint8_t>(value)); }
    void u16(std::uint16_t value)
    {
        u8(static_cast<std::uint8_t>(value >> 8));
        u8(static_cast<std::uint8_t>(value & 0xFF));
    }
    void i16(std::int16_t value) { u16(static_cast<std::uint16_t>(value)); }
    void sixteenSet(const PpSixteenSet& set)
    {
        std::uint16_t word = 0;
        for (unsigned k = 0; k < 16; ++k)
            if (set[k] != 0) word = static_cast<std::uint16_t>(word | (1u << k));
        u16(word);
    }
    template <std::size_t N>
    void chars(const std::array<char, N>& field)
    {
        for (char c : field) u8(static_cast<std::uint8_t>(c));
    }
    std::uint32_t length() const { return m_length; }

private:
    PpFrameCodec::Frame& m_frame;
    std::uint32_t m_length = 0;
};

void writeBfuConfig(Writer& w, const PpBfuConfig& d)
{
    w.i16(d.mainLoadDisconnect);
    w.i16(d.priorityLoadDisconnect);
    w.i16(d.disconnectCease);
    w.i8(d.disconnectTemp);
    w.i8(d.disconnectCeaseTemp);
}

void writeScuAddConfig(Writer& w, const PpScuAddConfig& d)
{
    w.u8(static_cast<std::uint8_t>((d.hasIntFanLoTempSpeed ? 1 : 0) + (d.hasColdOperation ? 1 : 0)));
    if (d.hasIntFanLoTempSpeed) {
        w.u8(pp::kScuAddConfigIntFanLoTempSpeed);
        w.u8(3);
        w.u8(d.scuIntFanLoTempSpeed);
    }
    if (d.hasColdOperation) {
        w.u8(pp::kScuAddConfigColdOperation);
        w.u8(8);
        for (std::uint8_t value : {d.scuColdopOnTemp, d.scuColdopOffTemp, d.scuHeater1Fg1Speed, d.scuHeaterFg3Speed,
                                   d.scuHeater2Fg1Fan1Speed, d.scuHeater2Fg1Fan2Speed})
            w.u8(value);
    }
}

bool unsupportedControl(std::uint8_t id)
{
    SSC_TRACE(a4ciGroup(), kUnexpected,
              "PpCommunicationHandler::setDeviceData: Request denied. Unsupported extended control parameter: %d", id);
    return false;
}

// Item 150 id 3: four 2-bit LED codes, group 1 in bits 0-1.
bool packFanGroupFaultLeds(const PpControlItem& item, std::uint8_t& packed)
{
    bool legal = true;
    packed = 0;
    for (unsigned group = 0; group < 4; ++group) {
        if (item.data[group] > 3) {
            SSC_TRACE(a4ciGroup(), kUnexpected,
                      "PpCommunicationHandler::verifyScuFanGroupFaultLedState: Invalid led state %d requested on SCU "
                      "fan group %d",
                      item.data[group], static_cast<int>(group + 1));
            legal = false;
        }
        packed = static_cast<std::uint8_t>(packed | ((item.data[group] & 3u) << (2 * group)));
    }
    if (!legal)
        SSC_TRACE(a4ciGroup(), kUnexpected,
                  "PpCommunicationHandler::setDeviceData: Request denied. At least one fault led of the fan groups "
                  "has illegal state");
    return legal;
}

bool writeScuExtendedControl(Writer& w, const PpExtendedControl& d)
{
    if (d.count > d.items.size()) return unsupportedControl(0);
    w.u8(d.count);
    for (unsigned i = 0; i < d.count; ++i) {
        const PpControlItem& item = d.items[i];
        if (item.id == pp::kScuExtControlFanSpeeds) {
            w.u8(item.id);
            w.u8(6);
            for (std::uint8_t speed : item.data) w.u8(speed);
        } else if (item.id == pp::kScuExtControlFanGroupFaultLeds) {
            std::uint8_t packed = 0;
            if (!packFanGroupFaultLeds(item, packed)) return false;
            w.u8(item.id);
            w.u8(3);
            w.u8(packed);
        } else {
            return unsupportedControl(item.id);
        }
    }
    return true;
}

bool writeBfuExtendedControl(Writer& w, const PpExtendedControl& d)
{
    if (d.count > d.items.size()) return unsupportedControl(0);
    w.u8(d.count);
    for (unsigned i = 0; i < d.count; ++i) {
        const PpControlItem& item = d.items[i];
        if (item.id == pp::kBfuExtControlLoads) {
            w.u8(item.id);
            w.u8(4);
            w.u8(item.data[0]);
            w.u8(item.data[1]);
        } else if (item.id == pp::kBfuExtControlBatteryFaultLed) {
            w.u8(item.id);
            w.u8(3);
            w.u8(item.data[0]);
        } else {
            return unsupportedControl(item.id);
        }
    }
    return true;
}

void writeScuConfig(Writer& w, const PpScuConfig& d)
{
    for (std::uint8_t value :
         {d.scuConfigFanGroup, d.scuConfigFanControl, d.scuConfigOtherPorts, d.scuHeater1OnTemp, d.scuHeater1OffTemp,
          d.scuHeater2OnTemp, d.scuHeater2OffTemp, d.scuIntFanLoTemp, d.scuIntFanHiTemp, d.scuExtFanLoUpTemp,
          d.scuExtFanHiUpTemp, d.scuExtFanLoDownTemp, d.scuExtFanHiDownTemp, d.scuExtFanSpeedFault})
        w.u8(value);
}

void writeProductIdentity(Writer& w, const PpProductIdentity& d)
{
    w.chars(d.productNumber);
    w.chars(d.revState);
    w.chars(d.productName);
    w.chars(d.productionDate);
    w.chars(d.serialNumber);
}

// The payload of `message` from `data`; false when the data is
// not that message's record or breaks its rules.
bool writePayload(pp::MessageNo message, const PpSetData& data, Writer& w)
{
    using namespace pp;
    switch (message) {
    case CC_VISUAL_INDICATION_REQ:
        if (auto* d = std::get_if<PpVisualIndication>(&data)) return w.u8(d->code), true;
        break;
    case PSU_SET_OUTPUT_VOLTAGE_REQ:
        if (auto* d = std::get_if<PpPsuOutputVoltage>(&data)) return w.i16(d->outputVoltage), true;
        break;
    case BFU_SET_CONFIG_REQ:
        if (auto* d = std::get_if<PpBfuConfig>(&data)) return writeBfuConfig(w, *d), true;
        break;
    case BFU_SET_CONTROL_REQ:
        if (auto* d = std::get_if<PpBfuControl>(&data)) return w.u8(d->connect), true;
        break;
    case SCU_SET_ADD_CONFIG_REQ:
        if (auto* d = std::get_if<PpScuAddConfig>(&data)) return writeScuAddConfig(w, *d), true;
        break;
    case SCU_EXTENDED_CONTROL_REQ:
        if (auto* d = std::get_if<PpScuExtendedControl>(&data)) return writeScuExtendedControl(w, *d);
        break;
    case BFU_EXTENDED_CONTROL_REQ:
        if (auto* d = std::get_if<PpBfuExtendedControl>(&data)) return writeBfuExtendedControl(w, *d);
        break;
    case PDU_SET_LIMITS_REQ:
        if (auto* d = std::get_if<PpPduLimits>(&data)) {
            for (std::int16_t v : {d->overvoltageRaise, d->overvoltageCease, d->undervoltageRaise, d->undervoltageCease})
                w.i16(v);
            return true;
        }
        break;
    case PDU_SET_EFUSES_REQ:
        if (auto* d = std::get_if<PpPduEfuses>(&data)) {
            w.sixteenSet(d->efuseOn);
            w.sixteenSet(d->secondSet);
            w.sixteenSet(d->thirdSet);
            return true;
        }
        break;
    case SCU_SET_CONFIG_REQ:
        if (auto* d = std::get_if<PpScuConfig>(&data)) return writeScuConfig(w, *d), true;
        break;
    case SCU_SET_FAN_SPEED_REQ:
        if (auto* d = std::get_if<PpScuFanSpeed>(&data)) {
            for (std::uint8_t speed : d->speed) w.u8(speed);
            w.u8(255);
            return true;
        }
        break;
    case SCU_SET_CABINET_PID_REQ:
        if (auto* d = std::get_if<PpProductIdentity>(&data)) return writeProductIdentity(w, *d), true;
        break;
    case UNUSED_132_REQ:
    case UNUSED_230_REQ:
        if (auto* d = std::get_if<PpRawPayload>(&data)) {
            const unsigned wanted = message == UNUSED_132_REQ ? 9 : 1;
            for (unsigned i = 0; i < wanted; ++i) w.u8(d->bytes[i]);
            return true;
        }
        break;
    default:
        SSC_TRACE(a4ciGroup(), kUnexpected, "PpCommunicationHandler::setDeviceData: Unexpected message: 0x%02X", message);
        return false;
    }
    SSC_TRACE(a4ciGroup(), kUnexpected,
              "PpCommunicationHandler::setDeviceData: The data given is not the record of message 0x%02X", message);
    return false;
}

} // namespace

bool PpFrameCodec::encodeSet(pp::MessageNo message, std::uint8_t sequence, const PpSetData& data, Frame& frame,
                             std::uint32_t& length)
{
    Writer w(frame);
    w.u8(message);
    w.u8(sequence);
    if (!writePayload(message, data, w)) return false;
    length = w.length();
    return length <= frame.size();
}
