#include "hwu/HWU_ImplBase.h"

#include "frame/FaultIds.h"
#include "frame/FuncType.h"
#include "frame/SscTrace.h"
#include "frame/TimerService.h"
#include "hwu/HdlcAddressBroker.h"
#include "hwu/PpCommunicationService.h"

#include <cstdio>
#include <cstring>

using namespace ssc_trace;

namespace {

// Indication codes of the visual indication message.
constexpr std::uint8_t kFaultLedOff = 48;
constexpr std::uint8_t kFaultLedOn = 49;
constexpr std::uint8_t kOperationalBlink = 64;
constexpr std::uint8_t kOperationalOn = 65;

enum class CharClass { Date, Serial, Text };

bool isAllowed(char c, CharClass charClass)
{
    const bool digit = c >= '0' && c <= '9';
    const bool upper = c >= 'A' && c <= 'Z';
    switch (charClass) {
    case CharClass::Date: return digit || c == '-' || c == ';';
    case CharClass::Serial: return digit || upper || (c >= 'a' && c <= 'z');
    case CharClass::Text: return c == ' ' || c == '!' || (c >= '#' && c <= '?') || upper || c == '_';
    }
    return false;
}

template <std::size_t N>
void fillText(std::array<char, N>& field, const char* text)
{
    field.fill('\0');
    std::snprintf(field.data(), N, "%s", text);
}

// The field as it came, ended by NUL at its last byte at the latest, or the
// default with a trace when a byte is not of its class.
template <std::size_t N>
void validate(std::array<char, N>& field, const std::array<char, N>& received, CharClass charClass,
              const char* fallback, const char* traceText, const FuncId_t& funcId)
{
    field = received;
    field[N - 1] = '\0';
    if (charClass == CharClass::Serial)
        for (std::size_t i = N - 1; i-- > 0 && (field[i] == ' ' || field[i] == '\0');) field[i] = '\0';
    for (std::size_t i = 0; i < N && field[i] != '\0'; ++i) {
        if (isAllowed(field[i], charClass)) continue;
        SSC_TRACE(equipmentGroup(), kUnexpected, traceText, field.data(), func_type::text(funcId.FuncType),
                  funcId.FuncInst);
        fillText(field, fallback);
        return;
    }
}

} // namespace

HWU_ImplBase::HWU_ImplBase(const FuncId_t& funcId, std::string hubPosition, const HdlcAddress& hdlcAddress,
                           HwuBrokerIf* broker, EquipmentManagerIf* listener, FaultsRegisterIf* faults)
    : m_funcId(funcId),
      m_ledFaultPtr(std::make_unique<Led>(Led::kFault)),
      m_ledOperationalPtr(std::make_unique<Led>(Led::kOperational)),
      m_hubPosition(std::move(hubPosition)),
      m_hdlcAddress(hdlcAddress),
      m_pBroker(broker),
      m_pListener(listener),
      m_pFaults(faults)
{
    m_productNumber.fill(' ');
    m_revState.fill(' ');
    m_productionDate.fill(' ');
    m_productName.fill(' ');
    m_productNumber.back() = m_revState.back() = m_productionDate.back() = m_productName.back() = '\0';
    std::snprintf(m_serialNumber.data(), m_serialNumber.size(), "%s%u", typeText(), funcId.FuncInst);
    SSC_TRACE(equipmentGroup(), kFlow, "Creating %p, %s-%d", static_cast<void*>(this), typeText(), funcId.FuncInst);
}

HWU_ImplBase::~HWU_ImplBase()
{
    // The concrete unit stops its timers; this is the last line of defence.
    TimerService::stopAllTimers(this);
    // What the unit had raised, its hub position faults among them, goes
    // with it.
    if (m_pFaults != nullptr) m_pFaults->ceaseFaults(m_funcId);
    SSC_TRACE(equipmentGroup(), kFlow, "Deleting %p, %s-%d", static_cast<void*>(this), typeText(), m_funcId.FuncInst);
}

const char* HWU_ImplBase::typeText() const { return func_type::text(m_funcId.FuncType); }

bool HWU_ImplBase::initObject()
{
    if (!Hdlc::getHdlcAddress(m_hubPosition, m_funcId.FuncType, nullptr)) {
        SSC_TRACE(equipmentGroup(), kDetail, "HWU_ImplBase::initObject: FuncType %s-%d, Invalid HubPosition: \"%s\"",
                  typeText(), m_funcId.FuncInst, m_hubPosition.c_str());
        return false;
    }
    SSC_TRACE(equipmentGroup(), kDetail,
              "HWU_ImplBase::initObject: FuncType %s-%d, HubPosition: \"%s\" was assigned HDLC-address 0x%2X",
              typeText(), m_funcId.FuncInst, m_hubPosition.c_str(), m_hdlcAddress.address);
    poll();
    if (TimerService::startCyclicTimer(m_pollPeriod, kPollTimer, this, 0) == 0)
        SSC_TRACE(equipmentGroup(), kError, "Failed to start cyclic poll timer for %s-%d!!", typeText(),
                  m_funcId.FuncInst);
    return true;
}

void HWU_ImplBase::timeout(TimerId timerId)
{
    if (timerId.timerType != kPollTimer) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Unexpected timeout received: %d!", timerId.timerType);
        return;
    }
    poll();
}

// ---- the poll ----

void HWU_ImplBase::poll()
{
    PpDeviceData data;
    if (sendGet(getStatusMsg(), nextSequence(), data))
        answered(data);
    else
        missed();
    const bool available = isAvailable();
    if (available != m_available) {
        m_available = available;
        m_statusChanged = true;
    }
    if (m_statusChanged) publishStatus();
}

void HWU_ImplBase::answered(const PpDeviceData& data)
{
    if (!m_commOk) m_statusChanged = true;
    ++m_okPolls;
    m_commOk = true;
    m_missedPolls = 0;
    // A unit that starts answering settles for four polls before it counts.
    if (m_okPolls > kSettlingPolls) handleStatusCfm(data);
}

void HWU_ImplBase::missed()
{
    if (m_commOk) m_statusChanged = true;
    ++m_missedPolls;
    m_commOk = false;
    if (m_missedPolls == 1) firstPollMissed();
    if (m_resetInterval != 0 && m_missedPolls % m_resetInterval == 0) resetStep();
    if (m_missedPolls == m_missingLimit) {
        unitMissing();
        m_started = false;
    }
    commLost();
    m_okPolls = 0;
}

void HWU_ImplBase::handleStatusCfm(const PpDeviceData& data)
{
    SSC_TRACE(equipmentGroup(), kUnexpected, "handleStatusCfm: enter");
    parseStatus(data);
    if ((isStartFlagSet() || !m_started) && !startSequence()) return;
    const bool measured = fetchMeasurements();
    if (isStartFlagSet() && m_started) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "%s-%d has restarted!", typeText(), m_funcId.FuncInst);
        m_pBroker->hwuRestarted(m_funcId);
    }
    if (!m_started) {
        m_started = true;
        unitFound();
    }
    handleStatus(measured);
    m_firstStatusDone = true;
}

bool HWU_ImplBase::startSequence()
{
    if (isStartFlagSet() &&
        !PpCommunicationService::clearStartFlag(nextSequence(), m_hdlcAddress.address, m_hdlcAddress.port, m_commOk)) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Unable to clear start flag on %s-%d", typeText(), m_funcId.FuncInst);
        return false;
    }
    bool replaced = false;
    if (!readProductData(&replaced)) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get product data for %s-%d!", typeText(),
                  m_funcId.FuncInst);
        return false;
    }
    if (replaced && m_started) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "%s-%d is replaced!", typeText(), m_funcId.FuncInst);
        unitMissing();
        m_started = false;
    }
    if (!readCapabilities()) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get capabilities for %s-%d!", typeText(),
                  m_funcId.FuncInst);
        return false;
    }
    capabilitiesDone();
    setLed(Led::kOperational, Led::kSteadyOn);
    return true;
}

bool HWU_ImplBase::readCapabilities()
{
    const std::uint8_t sequence = nextSequence();
    PpDeviceData capabilities;
    if (sendGet(getCapabilityMsg(), sequence, capabilities)) {
        m_capabilitiesRead = true;
        storeCapabilities(capabilities);
    } else {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to get Capabilities from %s-%d, port: %d", typeText(),
                  m_funcId.FuncInst, m_hdlcAddress.port);
        m_capabilitiesRead = false;
        clearCapabilities();
    }
    readAdditionalCapabilities(sequence);
    return m_capabilitiesRead;
}

void HWU_ImplBase::reset() { resetStep(); }

void HWU_ImplBase::resetStep()
{
    SSC_TRACE(equipmentGroup(), kDetail, "Sending reset to address 0x%02X", m_hdlcAddress.address);
    if (PpCommunicationService::resetDevice(m_hdlcAddress.address, m_hdlcAddress.port)) {
        // The unit lights its LEDs itself while it boots: nothing is known.
        setLed(Led::kOperational, Led::kNotAvailable);
        setLed(Led::kFault, Led::kNotAvailable);
    } else {
        SSC_TRACE(equipmentGroup(), kUnexpected, "Unable to forward reset to %s-%d", typeText(), m_funcId.FuncInst);
    }
    clearStatus();
}

void HWU_ImplBase::clearStatus() { m_firstStatusDone = false; }

// ---- found, missing, published ----

void HWU_ImplBase::unitFound()
{
    SSC_TRACE(equipmentGroup(), kDetail, "%s-%d found!", typeText(), m_funcId.FuncInst);
    m_missing = false;
    m_pBroker->hwuFound(m_funcId);
}

void HWU_ImplBase::unitMissing()
{
    if (!m_missing) {
        SSC_TRACE(equipmentGroup(), kUnexpected, "%s-%d Missing!", typeText(), m_funcId.FuncInst);
        m_pBroker->hwuMissing(m_funcId);
        m_missing = true;
    }
    clearStatus();
}

void HWU_ImplBase::publishStatus()
{
    m_statusChanged = false;
    const HwuStatusRecord record{m_available,
                                 m_commOk,
                                 m_ledOperationalPtr->getLedState(),
                                 m_ledFaultPtr->getLedState(),
                                 getPowerDistrFaultIndicator(),
                                 getBatteryFaultIndicator()};
    if (m_pListener != nullptr) m_pListener->statusChanged(m_funcId, record);
}

void HWU_ImplBase::setHwFault(bool on)
{
    setLed(Led::kFault, on ? Led::kSteadyOn : Led::kOff);
    m_hwFault = on;
    if (on)
        m_pFaults->raiseFault(fault_id::kHwuFaulty, m_funcId);
    else
        m_pFaults->ceaseFault(fault_id::kHwuFaulty, m_funcId);
}

// ---- LEDs ----

void HWU_ImplBase::setLed(std::uint32_t type, std::uint32_t state)
{
    if (!m_ledFaultPtr || !m_ledOperationalPtr) {
        SSC_TRACE(equipmentGroup(), kError, "m_ledFaultPtr or m_ledOperationalPtr is NULL");
        return;
    }
    if (type == Led::kFault)
        setFaultLed(isFaultLedAvailable() ? state : Led::kNotApplicable);
    else if (type == Led::kOperational)
        setOperationalLed(isOperationalLedAvailable() ? state : Led::kNotApplicable);
    else
        SSC_TRACE(equipmentGroup(), kUnexpected, "Unsupported LED type %d", type);
}

void HWU_ImplBase::setFaultLed(std::uint32_t state)
{
    Led& led = *m_ledFaultPtr;
    if (state == led.getLedState()) return;
    switch (state) {
    case Led::kNotApplicable:
    case Led::kNotAvailable: storeLed(led, state); break;
    case Led::kOff:
        if (sendIndication(kFaultLedOff, Led::kFault)) storeLed(led, state);
        break;
    case Led::kSteadyOn:
        if (sendIndication(kFaultLedOn, Led::kFault)) storeLed(led, state);
        break;
    default:
        SSC_TRACE(equipmentGroup(), kUnexpected, "Unsupported LED state %d for LED type %d", state, Led::kFault);
    }
}

void HWU_ImplBase::setOperationalLed(std::uint32_t state)
{
    Led& led = *m_ledOperationalPtr;
    if (state == led.getLedState()) return;
    switch (state) {
    case Led::kNotApplicable:
    case Led::kNotAvailable: storeLed(led, state); break;
    case Led::kSteadyOn:
        // An operational unit shows no fault: the fault LED goes off too.
        sendIndication(kOperationalOn, Led::kOperational);
        setLed(Led::kFault, Led::kOff);
        storeLed(led, state);
        break;
    case Led::kSlowBlink:
        sendIndication(kOperationalBlink, Led::kOperational);
        storeLed(led, state);
        break;
    default:
        SSC_TRACE(equipmentGroup(), kUnexpected, "Unsupported LED state %d for LED type %d", state,
                  Led::kOperational);
    }
}

bool HWU_ImplBase::sendIndication(std::uint8_t code, std::uint32_t ledType)
{
    if (sendSet(pp::CC_VISUAL_INDICATION_REQ, nextSequence(), PpVisualIndication{code})) return true;
    SSC_TRACE(equipmentGroup(), kUnexpected, "Failed to visual indication %d for led %d", code, ledType);
    return false;
}

void HWU_ImplBase::storeLed(Led& led, std::uint32_t state)
{
    led.setLedState(state);
    m_statusChanged = true;
}

std::uint32_t HWU_ImplBase::getLedState(std::uint32_t type) const
{
    if (type == Led::kFault) return m_ledFaultPtr->getLedState();
    if (type == Led::kOperational) return m_ledOperationalPtr->getLedState();
    SSC_TRACE(equipmentGroup(), kUnexpected, "Unknown led type received");
    return Led::kNotAvailable;
}

// ---- product data ----

bool HWU_ImplBase::readProductData(bool* replaced)
{
    const auto before = m_serialNumber;
    SSC_TRACE(equipmentGroup(), kDetail, "Sending CC_HW_PID_REQ to %s-%d", typeText(), m_funcId.FuncInst);
    PpProductIdentity identity;
    if (!PpCommunicationService::getProductData(m_hdlcAddress.address, identity, m_hdlcAddress.port, m_commOk))
        return false;
    HwuProductRecord record;
    validateProduct(identity, record);
    m_productNumber = record.productNumber;
    m_revState = record.revState;
    m_productName = record.productName;
    m_serialNumber = record.serialNumber;
    m_productionDate = record.productionDate;
    if (replaced != nullptr) *replaced = std::strcmp(before.data(), m_serialNumber.data()) != 0;
    return true;
}

bool HWU_ImplBase::getProductData(HwuProductRecord* record)
{
    SSC_TRACE(equipmentGroup(), kDetail, "Sending CC_HW_PID_REQ to %s-%d, requested", typeText(), m_funcId.FuncInst);
    HwuProductRecord fields{};
    PpProductIdentity identity;
    const bool answered =
        PpCommunicationService::getProductData(m_hdlcAddress.address, identity, m_hdlcAddress.port, m_commOk);
    if (answered) validateProduct(identity, fields);
    if (record != nullptr) *record = fields;
    return answered;
}

void HWU_ImplBase::validateProduct(const PpProductIdentity& identity, HwuProductRecord& into) const
{
    char serialDefault[pp::kSerialNumberSize];
    std::snprintf(serialDefault, sizeof serialDefault, "%s%u", typeText(), m_funcId.FuncInst);
    validate(into.productNumber, identity.productNumber, CharClass::Text, "INVALID",
             "Product number invalid: %s. Using default for %s-%d", m_funcId);
    validate(into.revState, identity.revState, CharClass::Text, typeText(),
             "Product revision invalid: %s. Using default for %s-%d", m_funcId);
    validate(into.productName, identity.productName, CharClass::Text, typeText(),
             "Product name invalid: %s. Using default for %s-%d", m_funcId);
    validate(into.serialNumber, identity.serialNumber, CharClass::Serial, serialDefault,
             "Product serial number invalid: %s. Using default for %s-%d", m_funcId);
    validate(into.productionDate, identity.productionDate, CharClass::Date, "000000",
             "Production date invalid: %s. Using default for %s-%d", m_funcId);
}

// ---- sending ----

bool HWU_ImplBase::sendSet(pp::MessageNo message, std::uint8_t sequence, const PpSetData& data)
{
    return sendSet(message, sequence, data, nullptr);
}

bool HWU_ImplBase::sendSet(pp::MessageNo message, std::uint8_t sequence, const PpSetData& data, std::uint8_t* cause)
{
    if (m_hdlcAddress.address == 0) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "Signal %d not sent to  %s-%d since hub position is invalid (HDLC address is zero)", message,
                  typeText(), m_funcId.FuncInst);
        return false;
    }
    return PpCommunicationService::setDeviceData(message, sequence, m_hdlcAddress.address, data, m_hdlcAddress.port,
                                                 m_commOk, cause);
}

bool HWU_ImplBase::sendGet(pp::MessageNo message, std::uint8_t sequence, PpDeviceData& out)
{
    if (m_hdlcAddress.address == 0) {
        SSC_TRACE(equipmentGroup(), kUnexpected,
                  "Signal %d not sent to  %s-%d since hub position is invalid (HDLC address is zero)", message,
                  typeText(), m_funcId.FuncInst);
        return false;
    }
    return PpCommunicationService::getDeviceData(message, sequence, m_hdlcAddress.address, out, m_hdlcAddress.port,
                                                 m_commOk);
}

std::uint8_t HWU_ImplBase::nextSequence() { return PpCommunicationService::nextSequenceNumber(); }
