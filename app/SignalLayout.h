#pragma once
// A signal layout as the bytes a gateway client sends, and bytes that came
// back read into a layout: a short signal leaves the rest of it zero.

#include <algorithm>
#include <cstring>
#include <string>

namespace app {

template <typename T>
std::string bytesOf(const T& layout)
{
    return std::string(reinterpret_cast<const char*>(&layout), sizeof layout);
}

template <typename T>
T layoutOf(const std::string& bytes)
{
    T layout{};
    std::memcpy(&layout, bytes.data(), std::min(bytes.size(), sizeof layout));
    return layout;
}

} // namespace app
