// SPDX-License-Identifier: MIT
#include "qalpack/runtime/StringList.h"

#include <algorithm>
#include <utility>

#include <QStringView>

#include "qalpack/runtime/Exception.h"

namespace qal {

namespace {

constexpr QChar kNameValueSeparator = u'=';
constexpr QChar kDelimiter = u',';
constexpr QChar kQuote = u'"';

[[noreturn]] void throwSortedListError()
{
    throw Error(QStringLiteral("Operation not allowed on sorted list"));
}

[[noreturn]] void throwIndexError(int index)
{
    throw Error(QStringLiteral("List index out of bounds (%1)").arg(index));
}

// Blanks and control characters, which separate unquoted comma-text items.
bool isBlank(QChar c)
{
    return c.unicode() >= 1 && c.unicode() <= u' ';
}

bool needsQuoting(const QString& s)
{
    return std::any_of(
        s.cbegin(), s.cend(), [](QChar c) { return c.unicode() <= u' ' || c == kQuote || c == kDelimiter; });
}

// Message texts come from C strings on the other side: nothing after a NUL
// character is part of them.
QStringView upToNul(const QString& text)
{
    const qsizetype nul = text.indexOf(QChar(0));
    return nul < 0 ? QStringView(text) : QStringView(text).left(nul);
}

} // namespace

TStringList::TStringList() = default;

TStringList::TStringList(bool ownsObjects)
    : ownsObjects_(ownsObjects)
{ }

TStringList::~TStringList()
{
    Clear();
}

TStringList::TStringList(TStringList&& other) noexcept
    : items_(std::move(other.items_))
    , deleter_(other.deleter_)
    , duplicates_(other.duplicates_)
    , ownsObjects_(other.ownsObjects_)
    , sorted_(other.sorted_)
    , caseSensitive_(other.caseSensitive_)
{
    other.items_.clear();
}

TStringList& TStringList::operator=(TStringList&& other) noexcept
{
    if (this != &other) {
        Clear();
        items_ = std::move(other.items_);
        other.items_.clear();
        deleter_ = other.deleter_;
        duplicates_ = other.duplicates_;
        ownsObjects_ = other.ownsObjects_;
        sorted_ = other.sorted_;
        caseSensitive_ = other.caseSensitive_;
    }
    return *this;
}

int TStringList::Count() const
{
    return static_cast<int>(items_.size());
}

const QString& TStringList::Strings(int index) const
{
    checkIndex(index);
    return items_[static_cast<std::size_t>(index)].string;
}

void TStringList::SetStrings(int index, const QString& s)
{
    if (sorted_)
        throwSortedListError();
    checkIndex(index);
    items_[static_cast<std::size_t>(index)].string = s;
}

void* TStringList::Objects(int index) const
{
    checkIndex(index);
    return items_[static_cast<std::size_t>(index)].object;
}

void TStringList::SetObjects(int index, void* object)
{
    checkCanStore(object);
    if (index < 0 || index >= Count()) {
        freeRefused(object);
        throwIndexError(index);
    }
    void* const replaced = std::exchange(items_[static_cast<std::size_t>(index)].object, object);
    if (ownsObjects_ && replaced != object)
        freeObject(replaced);
}

int TStringList::Add(const QString& s)
{
    return AddObject(s, nullptr);
}

int TStringList::AddObject(const QString& s, void* object)
{
    checkCanStore(object);
    int index = Count();
    if (sorted_ && Find(s, index)) {
        switch (duplicates_) {
        case TDuplicates::dupIgnore:
            freeRefused(object);
            return index;
        case TDuplicates::dupError:
            freeRefused(object);
            throw Error(QStringLiteral("String list does not allow duplicates"));
        case TDuplicates::dupAccept:
            break;
        }
    }
    insertItem(index, s, object);
    return index;
}

void TStringList::Insert(int index, const QString& s)
{
    InsertObject(index, s, nullptr);
}

void TStringList::InsertObject(int index, const QString& s, void* object)
{
    checkCanStore(object);
    if (sorted_) {
        freeRefused(object);
        throwSortedListError();
    }
    if (index < 0 || index > Count()) {
        freeRefused(object);
        throwIndexError(index);
    }
    insertItem(index, s, object);
}

void TStringList::Delete(int index)
{
    void* const object = Extract(index);
    if (ownsObjects_)
        freeObject(object);
}

void* TStringList::Extract(int index)
{
    checkIndex(index);
    const auto at = items_.begin() + index;
    void* const object = at->object;
    items_.erase(at);
    return object;
}

void TStringList::Clear()
{
    // Detach first, so that a deleter that looks at this list sees it empty.
    std::vector<Item> removed;
    removed.swap(items_);
    if (ownsObjects_) {
        for (const Item& item : removed)
            freeObject(item.object);
    }
}

int TStringList::IndexOf(const QString& s) const
{
    if (sorted_) {
        int index = -1;
        return Find(s, index) ? index : -1;
    }
    const auto it = std::find_if(items_.cbegin(), items_.cend(),
        [&](const Item& item) { return compareStrings(item.string, s) == 0; });
    return it == items_.cend() ? -1 : static_cast<int>(it - items_.cbegin());
}

int TStringList::IndexOfName(const QString& name) const
{
    for (int i = 0; i < Count(); ++i) {
        const QString& s = items_[static_cast<std::size_t>(i)].string;
        const qsizetype separator = s.indexOf(kNameValueSeparator);
        if (separator >= 0 && compareStrings(QStringView(s).left(separator), name) == 0)
            return i;
    }
    return -1;
}

int TStringList::IndexOfObject(const void* object) const
{
    const auto it = std::find_if(
        items_.cbegin(), items_.cend(), [&](const Item& item) { return item.object == object; });
    return it == items_.cend() ? -1 : static_cast<int>(it - items_.cbegin());
}

QString TStringList::Names(int index) const
{
    const QString& s = Strings(index);
    const qsizetype separator = s.indexOf(kNameValueSeparator);
    return separator < 0 ? QString() : s.left(separator);
}

QString TStringList::ValueFromIndex(int index) const
{
    if (index < 0)
        return {};
    const QString& s = Strings(index);
    const qsizetype separator = s.indexOf(kNameValueSeparator);
    return separator < 0 ? QString() : s.mid(separator + 1);
}

QString TStringList::Values(const QString& name) const
{
    return ValueFromIndex(IndexOfName(name));
}

void TStringList::SetValue(const QString& name, const QString& value)
{
    const int index = IndexOfName(name);
    if (value.isEmpty()) {
        if (index >= 0)
            Delete(index);
        return;
    }
    if (sorted_)
        throwSortedListError();
    QString entry = name + kNameValueSeparator + value;
    if (index < 0)
        items_.push_back(Item { std::move(entry), nullptr });
    else
        items_[static_cast<std::size_t>(index)].string = std::move(entry);
}

QString TStringList::CommaText() const
{
    if (items_.size() == 1 && items_.front().string.isEmpty())
        return QString(2, kQuote);
    QString text;
    for (std::size_t i = 0; i < items_.size(); ++i) {
        if (i > 0)
            text += kDelimiter;
        const QString& s = items_[i].string;
        if (needsQuoting(s)) {
            text += kQuote;
            text += QString(s).replace(kQuote, QString(2, kQuote));
            text += kQuote;
        } else {
            text += s;
        }
    }
    return text;
}

void TStringList::SetCommaText(const QString& text)
{
    Clear();
    const QStringView view = upToNul(text);
    const qsizetype size = view.size();
    qsizetype pos = 0;
    const auto skipBlanks = [&] {
        while (pos < size && isBlank(view[pos]))
            ++pos;
    };

    skipBlanks();
    while (pos < size) {
        QString item;
        if (view[pos] == kQuote) {
            ++pos;
            while (pos < size) {
                if (view[pos] == kQuote) {
                    if (pos + 1 < size && view[pos + 1] == kQuote) {
                        item += kQuote;
                        pos += 2;
                        continue;
                    }
                    ++pos;
                    break;
                }
                item += view[pos++];
            }
        } else {
            const qsizetype start = pos;
            while (pos < size && view[pos].unicode() > u' ' && view[pos] != kDelimiter)
                ++pos;
            item = view.mid(start, pos - start).toString();
        }
        Add(item);
        skipBlanks();
        if (pos < size && view[pos] == kDelimiter) {
            // "a," holds two items, the second empty.
            if (pos == size - 1)
                Add(QString());
            ++pos;
            skipBlanks();
        }
    }
}

QString TStringList::Text() const
{
    QString text;
    for (const Item& item : items_) {
        text += item.string;
        text += QLatin1String("\r\n");
    }
    return text;
}

void TStringList::SetText(const QString& text)
{
    Clear();
    const QStringView view = upToNul(text);
    const qsizetype size = view.size();
    qsizetype pos = 0;
    while (pos < size) {
        const qsizetype start = pos;
        while (pos < size && view[pos] != u'\r' && view[pos] != u'\n')
            ++pos;
        Add(view.mid(start, pos - start).toString());
        if (pos < size && view[pos] == u'\r')
            ++pos;
        if (pos < size && view[pos] == u'\n')
            ++pos;
    }
}

bool TStringList::Find(const QString& s, int& index) const
{
    bool found = false;
    int low = 0;
    int high = Count() - 1;
    while (low <= high) {
        const int middle = (low + high) / 2;
        const int comparison = compareStrings(items_[static_cast<std::size_t>(middle)].string, s);
        if (comparison < 0) {
            low = middle + 1;
        } else {
            high = middle - 1;
            if (comparison == 0) {
                found = true;
                if (duplicates_ != TDuplicates::dupAccept)
                    low = middle;
            }
        }
    }
    index = low;
    return found;
}

bool TStringList::Sorted() const
{
    return sorted_;
}

void TStringList::SetSorted(bool sorted)
{
    if (sorted == sorted_)
        return;
    if (sorted)
        Sort();
    sorted_ = sorted;
}

TDuplicates TStringList::Duplicates() const
{
    return duplicates_;
}

void TStringList::SetDuplicates(TDuplicates duplicates)
{
    duplicates_ = duplicates;
}

bool TStringList::CaseSensitive() const
{
    return caseSensitive_;
}

void TStringList::SetCaseSensitive(bool caseSensitive)
{
    if (caseSensitive == caseSensitive_)
        return;
    caseSensitive_ = caseSensitive;
    if (sorted_) {
        sorted_ = false;
        Sort();
        sorted_ = true;
    }
}

bool TStringList::OwnsObjects() const
{
    return ownsObjects_;
}

void TStringList::Sort()
{
    if (sorted_ || items_.size() < 2)
        return;
    std::stable_sort(items_.begin(), items_.end(),
        [this](const Item& a, const Item& b) { return compareStrings(a.string, b.string) < 0; });
}

void TStringList::Assign(const TStringList& other)
{
    if (&other == this)
        return;
    if (ownsObjects_ && other.holdsObjects())
        throw Error(QStringLiteral("An owning string list cannot take objects owned elsewhere"));
    Clear();
    for (const Item& item : other.items_)
        AddObject(item.string, item.object);
}

QStringList TStringList::toQStringList() const
{
    QStringList strings;
    strings.reserve(Count());
    for (const Item& item : items_)
        strings.append(item.string);
    return strings;
}

TStringList::const_iterator TStringList::begin() const
{
    return const_iterator(items_.cbegin());
}

TStringList::const_iterator TStringList::end() const
{
    return const_iterator(items_.cend());
}

void TStringList::setObjectDeleter(void (*deleter)(void*))
{
    if (!deleter && ownsObjects_ && holdsObjects())
        throw Error(QStringLiteral("An owning string list that holds objects needs a deleter"));
    deleter_ = deleter;
}

int TStringList::compareStrings(QStringView a, QStringView b) const
{
    return a.compare(b, caseSensitive_ ? Qt::CaseSensitive : Qt::CaseInsensitive);
}

bool TStringList::holdsObjects() const
{
    return std::any_of(
        items_.cbegin(), items_.cend(), [](const Item& item) { return item.object != nullptr; });
}

void TStringList::checkIndex(int index) const
{
    if (index < 0 || index >= Count())
        throwIndexError(index);
}

void TStringList::checkCanStore(const void* object) const
{
    if (ownsObjects_ && !deleter_ && object)
        throw Error(QStringLiteral("An owning string list without a deleter cannot hold objects"));
}

void TStringList::insertItem(int index, const QString& s, void* object)
{
    try {
        items_.insert(items_.begin() + index, Item { s, object });
    } catch (...) {
        freeRefused(object);
        throw;
    }
}

void TStringList::freeObject(void* object) const
{
    if (object && deleter_)
        deleter_(object);
}

void TStringList::freeRefused(void* object) const
{
    // The same object may already be in the list (added again under another
    // string): then it is not refused, only not added twice.
    if (ownsObjects_ && object && IndexOfObject(object) < 0)
        freeObject(object);
}

} // namespace qal
