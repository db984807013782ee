#include "froBl/froMgmtSwU/export/ldn.h"

#include <algorithm>

namespace {

std::string_view lastComponent(std::string_view ldn)
{
    const auto comma = ldn.rfind(',');
    return comma == std::string_view::npos ? ldn : ldn.substr(comma + 1);
}

} // namespace

std::string Ldn::moType(std::string_view ldn)
{
    const std::string_view component = lastComponent(ldn);
    const auto equals = component.rfind('=');
    return equals == std::string_view::npos ? std::string() : std::string(component.substr(0, equals));
}

std::string Ldn::instance(std::string_view ldn)
{
    const auto equals = ldn.rfind('=');
    return equals == std::string_view::npos ? std::string() : std::string(ldn.substr(equals + 1));
}

std::string Ldn::parent(std::string_view ldn)
{
    const auto comma = ldn.rfind(',');
    return comma == std::string_view::npos ? std::string() : std::string(ldn.substr(0, comma));
}

int Ldn::depth(std::string_view ldn)
{
    return static_cast<int>(std::count(ldn.begin(), ldn.end(), '='));
}

bool Ldn::isBelow(std::string_view below, std::string_view above)
{
    return below.size() > above.size() && below.starts_with(above) && below[above.size()] == ',';
}

std::string Ldn::child(std::string_view parent, std::string_view moType, std::string_view instance)
{
    std::string out(parent);
    if (!out.empty())
        out += ',';
    out.append(moType);
    out += '=';
    out.append(instance);
    return out;
}
