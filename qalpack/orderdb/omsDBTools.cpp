// SPDX-License-Identifier: MIT
#include "qalpack/orderdb/omsDBTools.h"

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <utility>
#include <vector>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include "qalpack/db/Backend.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "qalpack/db/StoredProc.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/IniFile.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

VariantTypeCastError::~VariantTypeCastError() = default;

namespace {

// A message layout as cached: the text read for the key ("NONE" when there
// is none) and the command lists parsed from it.
struct TMessageFormat
{
    QString key;
    QString layout;
    TCommandArray main;
    TCommandArray repeat;
};

// Keys join the message key and the section with a "|"; compared without
// regard to case.
class LayoutCache : public TObjectStringList<TMessageFormat>
{
public:
    LayoutCache()
        : TObjectStringList<TMessageFormat>(true)
    {
        SetSorted(true);
    }
};

struct DBToolsState
{
    std::vector<TLibHandle> libHandle;
    std::vector<TPluginEntry> dllExecute;
    TCommandArray mainMode;
    TCommandArray repeatMode;
    LayoutCache layouts;
};

DBToolsState& state()
{
    static DBToolsState instance;
    return instance;
}

QString noLayout()
{
    return QStringLiteral("NONE");
}

// The text before the first `separator`, removed from `text` together with
// the separator. Without a separator the result is empty and `text` stays.
QString takeBefore(QString& text, QChar separator)
{
    const qsizetype at = text.indexOf(separator);
    if (at < 0)
        return {};
    QString piece = text.left(at);
    text.remove(0, at + 1);
    return piece;
}

// The names of a "|"-separated list; the text after the last "|" is a name
// of its own when it is not empty.
TCommandArray commandNames(QStringView text)
{
    TCommandArray names;
    for (QStringView piece : text.split(u'|'))
        names.append(piece.toString());
    if (!names.isEmpty() && names.last().isEmpty())
        names.removeLast();
    return names;
}

TMessageFormat parseLayout(const QString& key, const QString& layout)
{
    TMessageFormat format { key, layout, {}, {} };
    if (layout == noLayout())
        return format;
    const qsizetype open = layout.indexOf(u'[');
    format.main = TCommandArray { QStringLiteral("action") }
        + commandNames(QStringView(layout).left(open < 0 ? layout.size() : open));
    if (open >= 0) {
        const qsizetype close = layout.indexOf(u']', open + 1);
        format.repeat
            = commandNames(QStringView(layout).mid(open + 1, close < 0 ? layout.size() : close - open - 1));
    }
    if (format.repeat.isEmpty())
        format.repeat.append(QString());
    return format;
}

const TMessageFormat& storeLayout(const QString& cacheKey, const QString& layout)
{
    LayoutCache& cache = state().layouts;
    int index = 0;
    if (cache.Find(cacheKey, index))
        cache.Delete(index);
    index = cache.AddObject(cacheKey, new TMessageFormat(parseLayout(cacheKey, layout)));
    return *cache.Object(index);
}

QString layoutCacheKey(const QString& section, const QString& key)
{
    return key + u'|' + section;
}

const TMessageFormat& lookupLayout(const QString& section, const QString& key)
{
    DBToolsState& tools = state();
    const QString cacheKey = layoutCacheKey(section, key);
    int index = 0;
    const TMessageFormat* format = nullptr;
    if (tools.layouts.Find(cacheKey, index)) {
        format = tools.layouts.Object(index);
    } else {
        // "NONE" is not a read selector: GetINIValue raises here, and the
        // caller reports the layout as missing.
        const QVariant layout = GetINIValue(
            DirStr(QStringLiteral("OMSINI")) + QStringLiteral("OMSMESS.INI"), section, key, noLayout());
        format = &storeLayout(cacheKey, layout.toString());
    }
    tools.mainMode = format->main;
    tools.repeatMode = format->repeat;
    return *format;
}

[[noreturn]] void castFailed(const QVariant& value)
{
    throw VariantTypeCastError(
        QStringLiteral("Could not convert variant of type (%1) into type (Integer)%2")
            .arg(QString::fromLatin1(value.typeName()),
                value.canConvert<QString>() ? QStringLiteral(": \"%1\"").arg(value.toString()) : QString()));
}

int roundedToInt(const QVariant& value, long double number)
{
    // Round half to even, as the desk's variants always converted floats.
    const long double rounded = std::nearbyint(number);
    if (!std::isfinite(rounded) || rounded < std::numeric_limits<int>::min()
        || rounded > std::numeric_limits<int>::max())
        castFailed(value);
    return static_cast<int>(rounded);
}

int variantToInt(const QVariant& value)
{
    if (!value.isValid())
        return 0;
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? -1 : 0;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return value.toInt();
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return roundedToInt(value, static_cast<long double>(value.toDouble()));
    case QMetaType::QString: {
        const QString text = value.toString();
        int integer = 0;
        if (TryStrToInt(text, integer))
            return integer;
        long double number = 0;
        if (TryStrToFloat(text, number))
            return roundedToInt(value, number);
        castFailed(value);
    }
    default:
        castFailed(value);
    }
}

TPluginEntry entryPoint(TLibHandle library, const QString& name)
{
    void* const symbol = ::dlsym(library, name.toUtf8().constData());
    // POSIX guarantees that a function's address survives this conversion.
    return reinterpret_cast<TPluginEntry>(symbol);
}

} // namespace

namespace internal {

void ResetDBTools()
{
    (void)FreeAllHandle();
    DBToolsState& tools = state();
    tools.libHandle.clear();
    tools.dllExecute.clear();
    tools.mainMode.clear();
    tools.repeatMode.clear();
    tools.layouts.Clear();
}

void CacheLayout(const QString& section, const QString& key, const QString& layoutText)
{
    (void)storeLayout(layoutCacheKey(section, key), layoutText);
}

} // namespace internal

const std::vector<TLibHandle>& LibHandle()
{
    return state().libHandle;
}

const std::vector<TPluginEntry>& DLLExecute()
{
    return state().dllExecute;
}

const TCommandArray& MainMode()
{
    return state().mainMode;
}

const TCommandArray& RepeatMode()
{
    return state().repeatMode;
}

QString DirStr(const QString& name)
{
    const TSession& session = TSession::Default();
    QString directory = session.IsAlias(name) ? session.AliasParams(name).value(0).mid(5) : name;
    if (!directory.endsWith(u'/') && !directory.endsWith(u'\\'))
        directory += u'/';
    return directory;
}

void INISectionValue(const QString& file, const QString& section, TStringList& list)
{
    TIniFile(file).ReadSectionValues(section, list);
    for (int i = 0; i < list.Count(); ++i) {
        const QString& line = list.Strings(i);
        list.SetStrings(i, line.mid(line.indexOf(u'=') + 1));
    }
}

int INISectionCount(const QString& file, const QString& section)
{
    return TIniFile(file).KeyCount(section);
}

int ININoOfSectionCount(const QString& file)
{
    return static_cast<int>(TIniFile(file).ReadSections().size());
}

QVariant GetINIValue(const QString& file, const QString& section, const QString& key, const QVariant& def)
{
    const TIniFile ini(file);
    switch (variantToInt(def)) {
    case 3:
        return ini.ReadInteger(section, key, 3);
    case 11:
        return ini.ReadBool(section, key, true);
    case 256:
        return ini.ReadString(section, key, QStringLiteral("256"));
    default:
        return {};
    }
}

namespace {

// A procedure's parameters as STORPROC.INI declares them.
struct ParamDeclaration
{
    QString name;
    TParamType direction;
    TFieldType type;
};

// The declarations last read for each file and procedure. A save prepares
// its procedure for every order, while the file changes only when an
// administrator edits it: its size and modification time say when to read
// it again, so an edit still reaches the next save.
class DeclarationCache
{
public:
    std::vector<ParamDeclaration> get(const QString& file, const QString& procName)
    {
        const QFileInfo info(file);
        const qint64 size = info.exists() ? info.size() : -1;
        const QDateTime modified = info.exists() ? info.lastModified() : QDateTime();
        const std::lock_guard lock(mutex_);
        Entry& entry = entries_[file + u'|' + procName];
        if (!entry.read || entry.size != size || entry.modified != modified) {
            entry = Entry { true, size, modified, read(file, procName) };
        }
        return entry.params;
    }

private:
    struct Entry
    {
        bool read = false;
        qint64 size = -1;
        QDateTime modified;
        std::vector<ParamDeclaration> params;
    };

    static std::vector<ParamDeclaration> read(const QString& file, const QString& procName)
    {
        TStringList definitions;
        INISectionValue(file, procName, definitions);
        std::vector<ParamDeclaration> params;
        for (QString definition : definitions) {
            QString name = takeBefore(definition, u',');
            const QString direction = takeBefore(definition, u',');
            params.push_back(
                { std::move(name), ParamTypeFromName(direction), FieldTypeFromName(definition) });
        }
        return params;
    }

    std::mutex mutex_;
    QHash<QString, Entry> entries_;
};

} // namespace

void PrepareStoredProc(const QString& procName, TStoredProc& proc)
{
    static DeclarationCache cache;
    const QString file = DirStr(QStringLiteral("OMSINI")) + QStringLiteral("STORPROC.INI");
    for (const ParamDeclaration& param : cache.get(file, procName))
        proc.Params().CreateParam(param.type, param.name, param.direction);
}

bool DLLPlugin(const QString& file, const QString& section)
{
    DBToolsState& tools = state();
    TStringList entries;
    INISectionValue(file, section, entries);
    tools.libHandle.resize(static_cast<std::size_t>(INISectionCount(file, section)));
    for (int i = 0; i < entries.Count(); ++i) {
        TLibHandle& library = tools.libHandle[static_cast<std::size_t>(i)];
        QString rest = entries.Strings(i);
        if (const qsizetype comma = rest.indexOf(u','); comma >= 0)
            library = ::dlopen(QFile::encodeName(rest.left(comma)).constData(), RTLD_NOW | RTLD_LOCAL);
        do {
            rest.remove(0, rest.indexOf(u',') + 1);
            const qsizetype comma = rest.indexOf(u',');
            const QString name = comma < 0 ? rest : rest.left(comma);
            tools.dllExecute.push_back(library != nullptr ? entryPoint(library, name) : nullptr);
        } while (rest.contains(u','));
    }
    return true;
}

bool FreeAllHandle()
{
    DBToolsState& tools = state();
    bool freed = false;
    for (TLibHandle& library : tools.libHandle) {
        freed = library != nullptr && ::dlclose(library) == 0;
        library = nullptr;
    }
    std::fill(tools.dllExecute.begin(), tools.dllExecute.end(), nullptr);
    return freed;
}

bool PrepareLayout(const QString& section, const QString& keyAndRest)
{
    const qsizetype bar = keyAndRest.indexOf(u'|');
    const QString key = bar < 0 ? QString() : keyAndRest.left(bar);
    try {
        return lookupLayout(section, key).layout != noLayout();
    } catch (const std::exception&) {
        return false;
    }
}

bool PrepareMessage(
    const QString& text, const TCommandArray& mainNames, const TCommandArray& repeatNames, TStringList& out)
{
    qsizetype mainIndex = 0;
    qsizetype repeatIndex = 0;
    qsizetype start = 0;
    for (qsizetype bar = text.indexOf(u'|'); bar >= 0; start = bar + 1, bar = text.indexOf(u'|', start)) {
        const QStringView piece = QStringView(text).mid(start, bar - start);
        if (mainIndex < mainNames.size()) {
            out.Add(mainNames[mainIndex++] + u'=' + piece.toString());
            continue;
        }
        if (repeatNames.isEmpty())
            throw Error(QStringLiteral("PrepareMessage: no repeat name for piece \"%1\" of message \"%2\"")
                            .arg(piece, text));
        if (repeatIndex >= repeatNames.size())
            repeatIndex = 0;
        out.Add(repeatNames[repeatIndex++] + u'=' + piece.toString());
    }
    return out.Count() > 0;
}

} // namespace qal
