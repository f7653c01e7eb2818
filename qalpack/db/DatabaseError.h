// SPDX-License-Identifier: MIT
// The one error of the database layer: a connection that cannot be opened, a
// statement the server refuses, an unknown field or parameter. Its message
// names the database and what failed.
#pragma once

#include <QString>

#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/Exception.h"

namespace qal {

class QALPACK_EXPORT DatabaseError : public Error
{
public:
    // `database` is the database (or alias) the failure concerns, empty when
    // none does (an alias file that cannot be read); `what` says what failed.
    // The message reads "Database OMSDATADB: <what>", or just `what`.
    DatabaseError(const QString& database, const QString& what);
    ~DatabaseError() override;

    [[nodiscard]] const QString& Database() const;
    [[nodiscard]] const QString& What() const;

private:
    QString database_;
    QString what_;
};

} // namespace qal
