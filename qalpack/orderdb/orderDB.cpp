// SPDX-License-Identifier: MIT
#include "qalpack/orderdb/orderDB.h"

#include "qalpack/orderdb/DatabaseAccess.h"

namespace qal {

TDatabase* orderDatabase()
{
    return TOmsDM::GetInstance()->GetDatabase(QStringLiteral("omsdata"));
}

} // namespace qal
