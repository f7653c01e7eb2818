// SPDX-License-Identifier: MIT
// Files of the source tree the tests read (the shipped configuration), found
// through QALPACK_SOURCE_DIR, which the shared test main sets, so that they
// do not depend on how the compiler spelt the test's own path.
#pragma once

#include <QDir>
#include <QString>

namespace qal::test {

// `relative` ("config/STORPROC.INI") inside the source tree.
inline QString sourcePath(const QString& relative)
{
    return QDir::cleanPath(qEnvironmentVariable("QALPACK_SOURCE_DIR") + u'/' + relative);
}

} // namespace qal::test
