#include "froBl/froMgmtSwU/export/IndHandler.h"

#include "froBl/froMgmtSwU/export/SignalDistributor.h"
#include "froBl/froMgmtSwU/export/supSysSingletons.h"
#include "froBl/froMgmtSwU/export/supSysTrace.h"

#include "ose/Format.h"
#include "ose/Kernel.h"
#include "ose/Trace.h"

#include <tinyxml.h>

#include <algorithm>
#include <array>
#include <cstring>

using namespace maofro;
using sup_sys_trace::kError;
using sup_sys_trace::kFlow;

namespace {

ose::TraceGroupId group() { return ose::traceGroup<"supSysIndHandlerLU">(); }

// An indication: its name and the words between the number and the
// attribute block, as the trace shows them. The text starts at headerSize;
// the signal has `spare` bytes after the text's room.
struct IndicationLayout {
    ose::SIGSELECT sigNo;
    const char* name;
    std::size_t headerSize;
    std::size_t spare;
    std::array<const char*, 5> fields;

    std::size_t fieldCount() const { return (headerSize - sizeof(ose::Signal) - sizeof(ATTRIBUTE_BLOCK_S)) / 4; }
};

const std::array<IndicationLayout, 4> kIndications{{
    {MAO_FRO_FAULT_IND, "MAO_FRO_FAULT_IND", sizeof(MAO_FRO_FAULT_IND_S), 4,
     {"froId", "froType", "specificProblem", "primaryInd", "noOfAttributes"}},
    {MAO_FRO_PARAMETER_CHD_IND, "MAO_FRO_PARAMETER_CHD_IND", sizeof(MAO_FRO_PARAMETER_CHD_IND_S), 4,
     {"froId", "froType", "noOfAttributes"}},
    {MAO_FRO_FAULT_CEASED_IND, "MAO_FRO_FAULT_CEASED_IND", sizeof(MAO_FRO_FAULT_CEASED_IND_S), 4,
     {"froId", "froType", "specificProblem", "noOfAttributes"}},
    {MAO_FRO_EVENT_IND, "MAO_FRO_EVENT_IND", sizeof(MAO_FRO_EVENT_IND_S), 0,
     {"froId", "froType", "specificEvent", "noOfAttributes"}},
}};

const IndicationLayout* layoutOf(ose::SIGSELECT sigNo)
{
    for (const IndicationLayout& layout : kIndications)
        if (layout.sigNo == sigNo) return &layout;
    return nullptr;
}

std::size_t sizeOf(const ose::Signal* signal)
{
    ose::Signal* buffer = const_cast<ose::Signal*>(signal);
    return ose::sigsize(&buffer);
}

const char* bytes(const ose::Signal* signal) { return reinterpret_cast<const char*>(signal); }

void traceTooShort(const char* name, const ose::Signal* signal, std::size_t needed)
{
    SSC_TRACE(group(), kError, "%s, sigNo=0x%x, too short (%zu bytes, at least %zu), ignored", name,
              ose::signalNumber(signal), sizeOf(signal), needed);
}

// The block's text up to its NUL, but never past its declared length or the
// end of the signal: both come from outside.
std::string blockText(const ose::Signal* signal, std::size_t offset, std::size_t declared)
{
    const std::size_t room = std::min(declared, sizeOf(signal) - offset);
    const char* start = bytes(signal) + offset;
    const void* end = std::memchr(start, '\0', room);
    return std::string(start, end != nullptr ? static_cast<const char*>(end) : start + room);
}

void traceIndication(const ose::Signal* signal, const IndicationLayout& layout)
{
    if (sizeOf(signal) < layout.headerSize) {
        traceTooShort(layout.name, signal, layout.headerSize);
        return;
    }
    // Every indication sent comes by here: the line is built only to print.
    if (!ose::Trace::enabled(group(), kFlow)) return;
    std::string line = ose::format("%s, sigNo=0x%x", layout.name, ose::signalNumber(signal));
    for (std::size_t i = 0; i < layout.fieldCount(); ++i)
        line += ose::format(", %s=%d", layout.fields[i], static_cast<int>(ose::loadBe32(bytes(signal) + 4 + 4 * i)));
    const auto* block = reinterpret_cast<const ATTRIBUTE_BLOCK_S*>(bytes(signal) + layout.headerSize -
                                                                   sizeof(ATTRIBUTE_BLOCK_S));
    const std::string text = blockText(signal, layout.headerSize, block->length);
    line += ose::format(", attributeArray[0].attribute=%d, attributeArray[0].type=%d, attributeArray[0].status=%d, "
                        "attributeArray[0].value=%d, attributeArray[0].data=%s",
                        static_cast<int>(block->type), static_cast<int>(block->elementCount),
                        static_cast<int>(block->zero), static_cast<int>(block->length), text.c_str());
    SSC_TRACE(group(), kFlow, "%s", line.c_str());
}

// --- XML ------------------------------------------------------------------------

TiXmlElement* addElement(TiXmlNode& parent, const char* tag)
{
    return parent.InsertEndChild(TiXmlElement(tag))->ToElement();
}

void addAttr(TiXmlNode& parent, const std::string& name, const std::string& type, const std::string& value)
{
    TiXmlElement* attr = addElement(parent, "attr");
    attr->SetAttribute("name", name);
    attr->SetAttribute("type", type);
    attr->SetAttribute("value", value);
}

// Declaration, mim and class; the rest goes below the class returned.
TiXmlElement* beginDocument(TiXmlDocument& document, const std::string& version, const std::string& ldn)
{
    document.InsertEndChild(TiXmlDeclaration("1.0", "UTF-8", ""));
    TiXmlElement* mim = addElement(document, "mim");
    mim->SetAttribute("version", version);
    TiXmlElement* cls = addElement(*mim, "class");
    cls->SetAttribute("ldn", ldn);
    return cls;
}

// GCC 12 at -O2 sees an overlapping copy in the printer's inlined string
// assignment that cannot happen (a one-character literal into an empty
// string); the warning is silenced for this function only.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wrestrict"
#endif
std::string print(const TiXmlDocument& document)
{
    TiXmlPrinter printer;
    printer.SetIndent(" ");
    document.Accept(&printer);
    return printer.Str();
}
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

// Entries of type "struct" open (value "BEGIN") and close a struct; the
// others are attributes of the innermost open one.
void addStructured(TiXmlElement& cls, const IndHandlerApi::Attributes& attributes)
{
    std::vector<TiXmlElement*> open{&cls};
    for (const IndHandlerApi::Attribute& attribute : attributes) {
        if (attribute.type != "struct") {
            addAttr(*open.back(), attribute.name, attribute.type, attribute.value);
        } else if (attribute.value == "BEGIN") {
            open.push_back(addElement(*open.back(), "struct"));
            open.back()->SetAttribute("name", attribute.name);
        } else if (open.size() > 1) {
            open.pop_back();
        } else {
            SSC_TRACE(group(), kError, "End of struct %s without its begin, ignored", attribute.name.c_str());
        }
    }
}

} // namespace

void IndHandler::FreeSignal::operator()(ose::Signal* signal) const
{
    ose::free_buf(&signal);
}

IndHandler::IndHandler(SignalDistributorAPI& distributor)
    : m_distributor(distributor),
      m_subscribedSignals{MAOFRO_NOTIFY_SUBSCRIBE_REQ2, NC_IND_HND_MAO_FRO_ATTACH_IND},
      m_mimVersion("R1A")
{
}

IndHandler::~IndHandler()
{
    for (ose::SIGSELECT sigNo : m_subscribedSignals) m_distributor.unsubscribe(sigNo, this);
    if (m_attachRef != 0) ose::detach(&m_attachRef);
}

IndHandler& IndHandler::instance()
{
    return SupSysSingletons::get<IndHandler>(
        [] { return std::make_unique<IndHandler>(SignalDistributor::instance()); });
}

void IndHandler::init()
{
    for (ose::SIGSELECT sigNo : m_subscribedSignals)
        if (m_distributor.subscribe(sigNo, this) == 0)
            SSC_TRACE(group(), kError, "Subscription of 0x%x failed", sigNo);
}

// --- received signals -------------------------------------------------------------

void IndHandler::handleSignal(ose::Signal* signal)
{
    const ose::SIGSELECT sigNo = ose::signalNumber(signal);
    if (sigNo == MAOFRO_NOTIFY_SUBSCRIBE_REQ2)
        handleSubscribe(signal);
    else if (sigNo == NC_IND_HND_MAO_FRO_ATTACH_IND)
        handleClientDeath(signal);
    else if (const IndicationLayout* layout = layoutOf(sigNo))
        traceIndication(signal, *layout);
    else
        SSC_TRACE(group(), kError, "Unknown signal (0x%x) received from 0x%x", sigNo, ose::sender(&signal));
}

void IndHandler::handleSubscribe(ose::Signal* signal)
{
    const auto* request = ose::signal_cast<MAOFRO_NOTIFY_SUBSCRIBE_REQ2_S>(signal);
    if (request == nullptr) {
        traceTooShort("MAOFRO_NOTIFY_SUBSCRIBE_REQ2", signal, sizeof(MAOFRO_NOTIFY_SUBSCRIBE_REQ2_S));
        return;
    }
    const std::uint32_t froType = request->froType;
    SSC_TRACE(group(), kFlow, "MAOFRO_NOTIFY_SUBSCRIBE_REQ2, sigNo=0x%x, signalRevision=%d, clientId=%d, froType=%d",
              ose::signalNumber(signal), static_cast<int>(request->signalRevision),
              static_cast<int>(request->clientId), static_cast<int>(froType));
    if (!m_attached) attachTo(ose::sender(&signal));
    if (m_subscribedTypes.insert(froType).second) {
        deliverPending(froType, m_pendingParameterChanges);
        deliverPending(froType, m_pendingEvents);
    }
    // Sent unstored, the records stay: a client that comes later gets them too.
    const auto stored = m_storedFaults.find(froType);
    if (stored == m_storedFaults.end()) return;
    for (const FaultRecord& fault : stored->second)
        sendFault(fault.froId, fault.froType, fault.ldn, fault.specificProblem, fault.faultDescription,
                  fault.additionalData, fault.eventId, false);
}

void IndHandler::attachTo(ose::PROCESS client)
{
    m_client = client;
    m_attached = true;
    ose::Signal* death = ose::alloc(sizeof(ose::Signal), NC_IND_HND_MAO_FRO_ATTACH_IND);
    m_attachRef = ose::attach(&death, client);
}

void IndHandler::handleClientDeath(ose::Signal* signal)
{
    SSC_TRACE(group(), kFlow, "NC_IND_HND_MAO_FRO_ATTACH_IND, sigNo=0x%x", ose::signalNumber(signal));
    // The kernel sends it on the client's behalf; from anyone else it would
    // cut the client off.
    if (!m_attached || ose::sender(&signal) != m_client) {
        SSC_TRACE(group(), kError, "NC_IND_HND_MAO_FRO_ATTACH_IND from 0x%x, not the client, ignored",
                  ose::sender(&signal));
        return;
    }
    if (m_attachRef != 0) ose::detach(&m_attachRef);
    m_attached = false;
    m_client = 0;
    m_subscribedTypes.clear();
}

// --- indications ----------------------------------------------------------------

void IndHandler::sendFault(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                           std::int32_t specificProblem, const std::string& faultDescription,
                           const std::vector<std::string>& additionalData, std::int32_t eventId, bool store)
{
    const std::string text = faultText(ldn, specificProblem, faultDescription, additionalData, eventId);
    OwnedSignal signal = make(MAO_FRO_FAULT_IND, froId, froType, specificProblem, text);
    if (listens(froType)) {
        deliver(std::move(signal));
        return;
    }
    if (store) storeFault({froId, froType, ldn, specificProblem, faultDescription, additionalData, eventId});
}

void IndHandler::sendFaultCeased(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                                 std::int32_t specificProblem)
{
    OwnedSignal signal = make(MAO_FRO_FAULT_CEASED_IND, froId, froType, specificProblem,
                              faultCeasedText(ldn, specificProblem));
    if (listens(froType)) deliver(std::move(signal));
    removeFault(froType, froId, specificProblem);
}

void IndHandler::sendParameterChange(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                                     const Attributes& attributes)
{
    const std::string text = attributesText(ldn, attributes, true);
    deliverOrKeep(froType, make(MAO_FRO_PARAMETER_CHD_IND, froId, froType, 0, text), m_pendingParameterChanges);
}

void IndHandler::sendEvent(std::uint32_t froId, std::uint32_t froType, const std::string& ldn,
                           std::int32_t specificEvent, const Attributes& attributes)
{
    const std::string text = attributesText(ldn, attributes, false);
    deliverOrKeep(froType, make(MAO_FRO_EVENT_IND, froId, froType, specificEvent, text), m_pendingEvents);
}

bool IndHandler::listens(std::uint32_t froType) const
{
    return m_attached && m_subscribedTypes.count(froType) != 0;
}

void IndHandler::deliver(OwnedSignal signal)
{
    if (!signal) return;
    traceIndication(signal.get(), *layoutOf(ose::signalNumber(signal.get())));
    ose::Signal* sent = signal.release();
    ose::send(&sent, m_client);
}

void IndHandler::deliverOrKeep(std::uint32_t froType, OwnedSignal signal, PendingLists& pending)
{
    if (!signal) return;
    if (listens(froType))
        deliver(std::move(signal));
    else
        pending[froType].push_back(std::move(signal));
}

void IndHandler::deliverPending(std::uint32_t froType, PendingLists& pending)
{
    const auto found = pending.find(froType);
    if (found == pending.end()) return;
    std::vector<OwnedSignal> signals = std::move(found->second);
    pending.erase(found);
    for (OwnedSignal& signal : signals) deliver(std::move(signal));
}

// --- stored faults --------------------------------------------------------------

IndHandler::FaultRecord* IndHandler::findFault(std::uint32_t froType, std::uint32_t froId,
                                               std::int32_t specificProblem)
{
    const auto stored = m_storedFaults.find(froType);
    if (stored == m_storedFaults.end()) return nullptr;
    for (FaultRecord& fault : stored->second)
        if (fault.froId == froId && fault.specificProblem == specificProblem) return &fault;
    return nullptr;
}

void IndHandler::storeFault(FaultRecord record)
{
    if (FaultRecord* known = findFault(record.froType, record.froId, record.specificProblem))
        known->faultDescription = record.faultDescription;
    else
        m_storedFaults[record.froType].push_back(std::move(record));
}

void IndHandler::removeFault(std::uint32_t froType, std::uint32_t froId, std::int32_t specificProblem)
{
    const auto stored = m_storedFaults.find(froType);
    if (stored == m_storedFaults.end()) return;
    std::erase_if(stored->second, [&](const FaultRecord& fault) {
        return fault.froId == froId && fault.specificProblem == specificProblem;
    });
    if (stored->second.empty()) m_storedFaults.erase(stored);
}

// --- signals --------------------------------------------------------------------

// The object, the problem or event where the layout has one, and one block
// with the text. The buffer comes zeroed: primaryInd stays 0, and the text
// with its NUL is all there is to copy.
IndHandler::OwnedSignal IndHandler::make(ose::SIGSELECT sigNo, std::uint32_t froId, std::uint32_t froType,
                                         std::int32_t code, const std::string& text)
{
    const IndicationLayout& layout = *layoutOf(sigNo);
    const std::uint32_t textSize = blockTextSize(text.size());
    OwnedSignal signal(ose::alloc(static_cast<ose::OSBUFSIZE>(layout.headerSize + textSize + layout.spare), sigNo));
    if (!signal) {
        SSC_TRACE(group(), kError, "%s with a text of %zu bytes could not be allocated, dropped", layout.name,
                  text.size());
        return signal;
    }
    char* start = reinterpret_cast<char*>(signal.get());
    ose::storeBe32(start + 4, froId);
    ose::storeBe32(start + 8, froType);
    if (layout.fieldCount() > 3) ose::storeBe32(start + 12, static_cast<std::uint32_t>(code));
    ose::storeBe32(start + layout.headerSize - sizeof(ATTRIBUTE_BLOCK_S) - 4, 1); // noOfAttributes
    auto* block = reinterpret_cast<ATTRIBUTE_BLOCK_S*>(start + layout.headerSize - sizeof(ATTRIBUTE_BLOCK_S));
    block->type = kXmlText;
    block->elementCount = 1;
    block->length = textSize;
    std::memcpy(start + layout.headerSize, text.c_str(), std::min<std::size_t>(textSize, text.size() + 1));
    return signal;
}

// --- bodies ---------------------------------------------------------------------

std::string IndHandler::faultText(const std::string& ldn, std::int32_t specificProblem,
                                  const std::string& faultDescription,
                                  const std::vector<std::string>& additionalData, std::int32_t eventId) const
{
    TiXmlDocument document;
    TiXmlElement* fault = addElement(*beginDocument(document, m_mimVersion, ldn), "fault");
    addAttr(*fault, "faultId", "S32", std::to_string(specificProblem));
    addAttr(*fault, "faultDescription", "STRING", faultDescription);
    TiXmlElement* array = addElement(*fault, "array");
    array->SetAttribute("name", "additionalData");
    for (const std::string& text : additionalData) {
        TiXmlElement* item = addElement(*array, "attr");
        item->SetAttribute("type", "STRING");
        item->SetAttribute("value", text);
    }
    addAttr(*fault, "eventId", "S32", std::to_string(eventId));
    return print(document);
}

std::string IndHandler::faultCeasedText(const std::string& ldn, std::int32_t specificProblem) const
{
    TiXmlDocument document;
    TiXmlElement* fault = addElement(*beginDocument(document, m_mimVersion, ldn), "fault");
    addAttr(*fault, "faultId", "S32", std::to_string(specificProblem));
    return print(document);
}

std::string IndHandler::attributesText(const std::string& ldn, const Attributes& attributes, bool withStructs) const
{
    TiXmlDocument document;
    TiXmlElement* cls = beginDocument(document, m_mimVersion, ldn);
    if (withStructs) {
        addStructured(*cls, attributes);
        return print(document);
    }
    for (const Attribute& attribute : attributes) addAttr(*cls, attribute.name, attribute.type, attribute.value);
    return print(document);
}
