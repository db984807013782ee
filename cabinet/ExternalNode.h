#pragma once
// Another node of the site, known by the object id the management system
// gave it, its node instance number (Nin) once it has one, and the HDLC
// addresses of its hub positions.

#include "cabinet/NodeRecord.h"

#include <array>
#include <cstdint>

struct ExternalNode : NodeRecord {
    static constexpr std::size_t kMaxAddresses = 6;

    explicit ExternalNode(std::int32_t id = -1) : objectId(id) {}

    bool ninValid = false;
    std::int32_t nin = 0;
    std::int32_t objectId;
    std::array<std::uint32_t, kMaxAddresses> hdlcAddresses{}; // 0 ends the list
};
