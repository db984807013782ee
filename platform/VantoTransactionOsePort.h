#pragma once
// The transaction server reached by the kernel's calls from the calling
// process of a world, on that process's node.

#include "platform/VantoTransactionPortIf.h"

class VantoTransactionOsePort : public VantoTransactionPortIf {
public:
    std::vector<std::uint8_t> request(const std::vector<std::uint8_t>& signal, std::uint32_t replyNo,
                                      std::uint32_t timeoutMs) override;
};
