#pragma once
// A site file describes a simulated cabinet: its units with type, port,
// HDLC address, product data and the values they start with. The format
// is in docs/site-file.md.

#include "sim/SimCabinet.h"

#include <string>

namespace sim {

class SiteFile {
public:
    // Adds the units of the file at `path` to `cabinet`. False with
    // "FILE:LINE: reason" in `error` for a file that cannot be read or
    // describes something that cannot be; the cabinet is then left empty.
    static bool load(const std::string& path, SimCabinet& cabinet, std::string& error);
    // The same for a text, with `name` standing for the file in messages.
    static bool parse(const std::string& text, const std::string& name, SimCabinet& cabinet, std::string& error);
};

} // namespace sim
