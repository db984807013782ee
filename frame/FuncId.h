#pragma once
// Which function a thing belongs to: the kind of function and its instance.

#include <cstdint>

struct FuncId_t {
    std::uint32_t FuncType = 0;
    std::uint32_t FuncInst = 0;

    friend bool operator==(const FuncId_t&, const FuncId_t&) = default;
};
