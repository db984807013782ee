#include "frame/EcbLinxService.h"

#include "frame/SscTrace.h"

using namespace ssc_trace;

namespace {
EcbLinxHandler* g_pHandler = nullptr;
} // namespace

void EcbLinxService::setHandler(EcbLinxHandler* handler) { g_pHandler = handler; }

bool EcbLinxService::createLink(std::int32_t objectId, bool primary, std::uint32_t hdlcAddress)
{
    if (g_pHandler == nullptr) {
        SSC_TRACE(priSecGroup(), kUnexpected, "EcbLinxService: no link handler, no link to node %d at 0x%x", objectId,
                  hdlcAddress);
        return false;
    }
    return g_pHandler->createLink(objectId, primary, hdlcAddress);
}

void EcbLinxService::deleteLink(std::int32_t objectId)
{
    if (g_pHandler != nullptr) g_pHandler->deleteLink(objectId);
}
