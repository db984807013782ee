#include "platform/NameServerSignals.h"

#include "ose/Kernel.h"

#include <cstring>

namespace name_server {

ose::Signal* makeServiceSignal(const ose::SIGSELECT sigNo, const std::string& name)
{
    const std::uint32_t field = nameFieldSize(name.size());
    ose::Signal* signal = ose::alloc(field + sizeof(NS_SERVICE_S), sigNo);
    auto* header = reinterpret_cast<NS_SERVICE_S*>(signal);
    header->fieldSize = field;
    char* text = reinterpret_cast<char*>(signal) + sizeof(NS_SERVICE_S); // zero-filled
    std::memcpy(text, name.data(), name.size());
    return signal;
}

bool readServiceName(const ose::Signal* signal, std::string& name)
{
    const auto* header = ose::signal_cast<NS_SERVICE_S>(signal);
    if (header == nullptr) return false;
    ose::Signal* buffer = const_cast<ose::Signal*>(signal);
    const std::size_t size = ose::sigsize(&buffer);
    const std::size_t field = header->fieldSize;
    if (field == 0 || field > size - sizeof(NS_SERVICE_S)) return false;
    const char* text = reinterpret_cast<const char*>(signal) + sizeof(NS_SERVICE_S);
    const void* end = std::memchr(text, '\0', field);
    if (end == nullptr) return false;
    const std::size_t length = static_cast<std::size_t>(static_cast<const char*>(end) - text);
    if (length == 0 || length > kMaxNameLength) return false;
    name.assign(text, length);
    return true;
}

} // namespace name_server
