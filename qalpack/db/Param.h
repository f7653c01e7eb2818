// SPDX-License-Identifier: MIT
// Parameters of queries and stored procedures: a name, a data type, a
// direction and a value that may be unbound, null or set; the list of them
// in order, found by name without regard to case.
#pragma once

#include <memory>
#include <vector>

#include <QDateTime>
#include <QString>
#include <QStringView>
#include <QVariant>

#include "qalpack/db/Backend.h"
#include "qalpack/qalpack_export.h"

namespace qal {

class TQuery;

// A parameter of a query or a stored procedure. A parameter nobody has set
// is unbound: a query refuses to run with it, a stored procedure leaves it
// out so that the server's default applies. Setting a null value (SetValue
// with an invalid QVariant) binds an explicit NULL.
class QALPACK_EXPORT TParam
{
public:
    TParam(const QString& name, TFieldType dataType, TParamType paramType);

    [[nodiscard]] const QString& Name() const;
    [[nodiscard]] TFieldType DataType() const;
    void SetDataType(TFieldType type);
    [[nodiscard]] TParamType ParamType() const;
    void SetParamType(TParamType type);
    // Whether a stored procedure is given the value (input, input-output, or
    // no direction set) and whether it sets it (output, input-output, result).
    [[nodiscard]] bool IsInput() const;
    [[nodiscard]] bool IsOutput() const;

    [[nodiscard]] bool Bound() const;
    [[nodiscard]] bool IsNull() const;
    // Back to unbound and null.
    void Clear();

    // Each setter binds the parameter and, while its data type is unknown,
    // gives it the setter's type.
    void SetAsString(const QString& value);
    void SetAsInteger(qint64 value);
    void SetAsFloat(double value);
    void SetAsBoolean(bool value);
    void SetAsDateTime(const QDateTime& value);
    // Takes text, integers, floats, booleans and date-times; an invalid or
    // null QVariant binds NULL. Throws DatabaseError for other types.
    void SetValue(const QVariant& value);

    // Readers convert like a field's do: "" / 0 / false / invalid for null;
    // DatabaseError naming the parameter for text that is not a number.
    [[nodiscard]] QString AsString() const;
    [[nodiscard]] int AsInteger() const;
    [[nodiscard]] qint64 AsLargeInt() const;
    [[nodiscard]] double AsFloat() const;
    [[nodiscard]] bool AsBoolean() const;
    [[nodiscard]] QDateTime AsDateTime() const;
    [[nodiscard]] QVariant Value() const;

    // The value as it is handed to a driver (monostate for null).
    [[nodiscard]] const backend::Value& RawValue() const;
    // Sets the value from what a driver returned, converted to DataType (or
    // to `columnType` while DataType is unknown). For output parameters.
    void SetFromRaw(const backend::RawValue& value, TFieldType columnType);

private:
    void assign(backend::Value value, TFieldType type);

    QString name_;
    backend::Value value_;
    TFieldType dataType_;
    TParamType paramType_;
    bool bound_ = false;
};

// The parameters of a query or stored procedure, in order. Names match
// without regard to case.
class QALPACK_EXPORT TParams
{
public:
    TParams();
    ~TParams();
    TParams(const TParams&) = delete;
    TParams& operator=(const TParams&) = delete;

    [[nodiscard]] int Count() const;
    // Throws DatabaseError for an index outside 0..Count-1.
    [[nodiscard]] TParam& Items(int index);
    [[nodiscard]] const TParam& Items(int index) const;
    // Appends a parameter and returns it; the list owns it.
    TParam& CreateParam(TFieldType dataType, const QString& name, TParamType paramType);
    // nullptr when there is no parameter of that name.
    [[nodiscard]] TParam* FindParam(QStringView name);
    [[nodiscard]] const TParam* FindParam(QStringView name) const;
    // Throws DatabaseError naming the parameter when there is none.
    [[nodiscard]] TParam& ParamByName(QStringView name);
    void Clear();

private:
    friend class TQuery;
    std::vector<std::unique_ptr<TParam>> items_;
};

} // namespace qal
