#include "froBl/froMgmtSwU/export/EfuseFroCtrl.h"

void EfuseFroCtrl::postSet()
{
    postCreate();
}
