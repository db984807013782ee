#include "hwu/HwuUnitFactory.h"

#include "frame/FuncType.h"
#include "hwu/Bfu.h"
#include "hwu/Clu.h"
#include "hwu/Pdu.h"
#include "hwu/Psu.h"
#include "hwu/Sau.h"
#include "hwu/Scu.h"

std::unique_ptr<HwuStatusIf> HwuUnitFactory::createUnit(const HwuUnitArgs& args)
{
    switch (args.funcId.FuncType) {
    case func_type::kScu:
        return std::make_unique<Scu>(args, HWU_SC::Collaborators{m_sides.alarms, m_sides.cabinet, m_sides.climate});
    case func_type::kPsu: return std::make_unique<Psu>(args, m_sides.climate);
    case func_type::kBfu: return std::make_unique<Bfu>(args, m_sides.power);
    case func_type::kPdu: return std::make_unique<Pdu>(args, m_sides.efuses);
    case func_type::kSau: return std::make_unique<Sau>(args, m_sides.alarms);
    case func_type::kClu: return std::make_unique<Clu>(args, m_sides.climate);
    default: return nullptr;
    }
}
