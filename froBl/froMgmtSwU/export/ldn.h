#pragma once
// The name of a managed object: a comma-separated path of class=instance
// components, such as "Cabinet=1,HwUnit=3". Everything is derived from the
// text alone.

#include <string>
#include <string_view>

class Ldn {
public:
    // Text between the last comma (or the start) and the last '='; empty when
    // the last component has no '='.
    static std::string moType(std::string_view ldn);
    // Text after the last '='.
    static std::string instance(std::string_view ldn);
    // Text before the last comma; empty for a top-level object.
    static std::string parent(std::string_view ldn);
    // Number of '=' characters.
    static int depth(std::string_view ldn);
    // True if below starts with above followed by a comma.
    static bool isBelow(std::string_view below, std::string_view above);
    // parent + "," + moType + "=" + instance, without the comma for no parent.
    static std::string child(std::string_view parent, std::string_view moType, std::string_view instance);
};
