#pragma once
// A fault as the core knows it: its number and an optional text that travels
// with it to the management interfaces. Two faults are the same fault when
// their numbers are equal; the text does not take part.

#include <cstdint>
#include <string>

struct FaultId_t {
    static constexpr std::int32_t kNoFault = 99999;

    FaultId_t() = default;
    explicit FaultId_t(std::int32_t faultId, std::string faultText = {}) : id(faultId), text(std::move(faultText)) {}

    std::int32_t id = kNoFault;
    std::string text;

    friend bool operator==(const FaultId_t& left, const FaultId_t& right) { return left.id == right.id; }
};
