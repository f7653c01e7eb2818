// SPDX-License-Identifier: MIT
#include "qalpack/runtime/StringList.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

// Comma text arrives with every order update (the attributes), so it is read
// eight characters at a time where the processor can.

// A comma text up to its first NUL, and the number of ',' in that part.
struct CommaTextExtent
{
    const char16_t* end;
    std::size_t delimiters = 0;
};

// The set bits of a byte (without the processor's own count, which the
// baseline x86-64 target lacks and the compiler would make a library call).
std::size_t bitCount8(unsigned bits) noexcept
{
    bits = bits - ((bits >> 1) & 0x55u);
    bits = (bits & 0x33u) + ((bits >> 2) & 0x33u);
    return (bits + (bits >> 4)) & 0x0fu;
}

CommaTextExtent commaTextExtent(const char16_t* p, const char16_t* const end) noexcept
{
    CommaTextExtent extent { end };
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i delimiter = _mm_set1_epi16(static_cast<short>(u','));
    for (; end - p >= 8; p += 8) {
        const __m128i chars = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(chars, zero)) != 0)
            break; // the NUL is found below
        // One bit per character: the compares packed to bytes, against zeros.
        const auto hits = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_packs_epi16(_mm_cmpeq_epi16(chars, delimiter), zero)));
        extent.delimiters += bitCount8(hits);
    }
#endif
    for (; p != end; ++p) {
        if (*p == 0) {
            extent.end = p;
            break;
        }
        extent.delimiters += *p == u',' ? 1 : 0;
    }
    return extent;
}

// The end of the unquoted item that starts at `p`: the first blank, control
// character or ',' (or `end`).
const char16_t* unquotedItemEnd(const char16_t* p, const char16_t* const end) noexcept
{
#if defined(__SSE2__)
    const __m128i blank = _mm_set1_epi16(static_cast<short>(u' '));
    const __m128i delimiter = _mm_set1_epi16(static_cast<short>(u','));
    const __m128i zero = _mm_setzero_si128();
    for (; end - p >= 8; p += 8) {
        const __m128i chars = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        // A character is at most ' ' exactly when subtracting ' ' saturates to 0.
        const __m128i stops = _mm_or_si128(
            _mm_cmpeq_epi16(_mm_subs_epu16(chars, blank), zero), _mm_cmpeq_epi16(chars, delimiter));
        if (const auto hits = static_cast<unsigned>(_mm_movemask_epi8(stops)))
            return p + std::countr_zero(hits) / 2;
    }
#endif
    while (p != end && *p > u' ' && *p != u',')
        ++p;
    return p;
}

} // namespace

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
    // Every item is a string of its own, never `text` or a piece sharing its
    // data: records hand in the comma text of a message field as a raw view
    // of the message, without copying it first.
    // `text` may be one of this list's own strings: hold on to it while the
    // old items go.
    QString holder;
    if (!items_.empty())
        holder = text;
    const char16_t* p = QStringView(text).utf16();
    const CommaTextExtent extent = commaTextExtent(p, p + text.size());
    const char16_t* const end = extent.end;

    // A plain list (unsorted, owning nothing) is rewritten in place: an
    // update's attributes mostly repeat the last ones, and an item equal to
    // the one already in its place keeps that string. A sorted list takes
    // the items through Add, for its order and duplicate rules; an owning
    // list frees its objects first.
    const bool inPlace = !sorted_ && !ownsObjects_;
    if (!inPlace)
        Clear();
    items_.reserve(extent.delimiters + 1);
    std::size_t count = 0;
    const auto keeps = [&](QStringView item) {
        if (!inPlace || count == items_.size() || item.isEmpty() || items_[count].string != item)
            return false;
        items_[count++].object = nullptr;
        return true;
    };
    const auto put = [&](QString&& item) {
        if (!inPlace) {
            Add(item);
            return;
        }
        if (count < items_.size())
            items_[count] = Item { std::move(item), nullptr };
        else
            items_.push_back(Item { std::move(item), nullptr });
        ++count;
    };
    const auto skipBlanks = [&p, end] {
        while (p != end && isBlank(QChar(*p)))
            ++p;
    };

    skipBlanks();
    while (p != end) {
        if (*p == kQuote) {
            ++p;
            // Runs without quotes go in whole; "" inside is one quote.
            QString item;
            for (;;) {
                const char16_t* const run = p;
                p = std::find(p, end, kQuote.unicode());
                item += QStringView(run, p);
                if (p == end)
                    break;
                if (end - p > 1 && p[1] == kQuote) {
                    item += kQuote;
                    p += 2;
                    continue;
                }
                ++p;
                break;
            }
            if (!keeps(item))
                put(std::move(item));
        } else {
            const char16_t* const start = p;
            p = unquotedItemEnd(p, end);
            if (const QStringView item(start, p); !keeps(item))
                put(item.toString());
        }
        skipBlanks();
        if (p != end && *p == kDelimiter) {
            // "a," holds two items, the second empty.
            if (end - p == 1)
                put(QString());
            ++p;
            skipBlanks();
        }
    }
    if (inPlace)
        items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(count), items_.end());
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
