// SPDX-License-Identifier: MIT
// The string list that order records and keyed lists rely on: strings with an
// attached object each, "name=value" look-up, comma text as it travels in
// order messages, and sorted lists with binary search and duplicate rules.
#pragma once

#include <cstddef>
#include <iterator>
#include <vector>

#include <QString>
#include <QStringList>
#include <QStringView>

#include "qalpack/qalpack_export.h"

namespace qal {

// What a sorted list does when Add meets a string that is already there.
// Unsorted lists accept every string whatever this says.
enum class TDuplicates { dupIgnore, dupAccept, dupError };

// A list of strings, each with an untyped object pointer.
//
// Comparison: every look-up (IndexOf, IndexOfName, Values, Find) and sorting
// compare with QString::compare, case-insensitively unless CaseSensitive is
// set, so Values("investorid") finds "InvestorID=77".
//
// Errors: an index outside 0..Count-1 throws qal::Error "List index out of
// bounds (N)"; changing a string in place or inserting at a position on a
// sorted list throws "Operation not allowed on sorted list"; adding a
// duplicate to a sorted dupError list throws "String list does not allow
// duplicates".
//
// Objects: a plain list never frees its objects. An owning list (OwnsObjects)
// frees them through its deleter on Delete, Clear, SetObjects (the replaced
// one), Assign, move assignment and destruction; use TObjectStringList<T>,
// which installs a deleter for T. An owning list takes every object handed
// to it: when the call refuses the object (dupIgnore, dupError, a sorted
// list's Insert, a bad index) the object is freed before the call returns or
// throws. A non-null object must appear at most once in an owning list.
// An owning list without a deleter cannot free anything, so it refuses to
// store a non-null object (qal::Error; the caller keeps the object).
//
// Not copyable (Assign copies strings and object pointers explicitly);
// movable, the moved-from list is left empty.
class QALPACK_EXPORT TStringList
{
    struct Item
    {
        QString string;
        void* object = nullptr;
    };

public:
    // Range-for over the strings.
    class const_iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = QString;
        using difference_type = std::ptrdiff_t;
        using pointer = const QString*;
        using reference = const QString&;

        const_iterator() = default;
        reference operator*() const { return it_->string; }
        pointer operator->() const { return &it_->string; }
        const_iterator& operator++()
        {
            ++it_;
            return *this;
        }
        const_iterator operator++(int)
        {
            const_iterator before = *this;
            ++it_;
            return before;
        }
        friend bool operator==(const const_iterator&, const const_iterator&) = default;

    private:
        friend class TStringList;
        explicit const_iterator(std::vector<Item>::const_iterator it)
            : it_(it)
        { }
        std::vector<Item>::const_iterator it_;
    };

    // Inline: the records that hold lists are set up without a call here.
    TStringList() = default;
    // An owning list needs a deleter before it can hold objects: see the class
    // comment and TObjectStringList.
    explicit TStringList(bool ownsObjects);
    virtual ~TStringList();

    TStringList(const TStringList&) = delete;
    TStringList& operator=(const TStringList&) = delete;
    // Takes the strings, objects (and their ownership), settings and deleter.
    TStringList(TStringList&& other) noexcept;
    // Frees this list's owned objects first.
    TStringList& operator=(TStringList&& other) noexcept;

    [[nodiscard]] int Count() const;
    [[nodiscard]] const QString& Strings(int index) const;
    // Throws on a sorted list, whose order the new text could break.
    void SetStrings(int index, const QString& s);
    [[nodiscard]] void* Objects(int index) const;
    // An owning list frees the object it replaces (unless it is the same).
    void SetObjects(int index, void* object);

    // Appends (unsorted) or inserts where Find places it (sorted), and
    // returns the index. A sorted dupIgnore list returns the index of the
    // string already there and adds nothing; dupAccept inserts before the
    // equal strings.
    int Add(const QString& s);
    int AddObject(const QString& s, void* object);
    // index may be Count (append). Throws on a sorted list.
    void Insert(int index, const QString& s);
    void InsertObject(int index, const QString& s, void* object);
    // Removes the entry; an owning list then frees its object.
    void Delete(int index);
    // Removes the entry and hands its object back to the caller, unfreed.
    void* Extract(int index);
    void Clear();

    // Index of the first equal string, or -1. A sorted list uses Find, which
    // may land on any of several equal strings unless Duplicates is dupAccept.
    [[nodiscard]] int IndexOf(const QString& s) const;
    // Index of the first "name=..." entry (text before the first '='), or -1.
    // Entries without '=' never match.
    [[nodiscard]] int IndexOfName(const QString& name) const;
    [[nodiscard]] int IndexOfObject(const void* object) const;

    // Text before the first '='; empty when the string has none.
    [[nodiscard]] QString Names(int index) const;
    // Text after the first '='; empty when the string has none, and empty for
    // a negative index, so ValueFromIndex(IndexOfName(n)) is safe.
    [[nodiscard]] QString ValueFromIndex(int index) const;
    // Value of the first entry named `name`, or empty.
    [[nodiscard]] QString Values(const QString& name) const;
    // A non-empty value replaces the first entry named `name` in place with
    // "name=value" (spelt as given here), or appends it. An empty value
    // deletes that entry. Setting a value on a sorted list throws; deleting
    // works.
    void SetValue(const QString& name, const QString& value);

    // The strings joined by ','. A string holding a blank, a control
    // character, '"' or ',' is quoted with '"' and its quotes doubled; an
    // empty string among others is written as nothing ("a,,b"); a list of
    // one empty string is "\"\"", an empty list "".
    [[nodiscard]] QString CommaText() const;
    // Replaces the content with the items of a comma text, each added with
    // Add (so a sorted list sorts them and applies Duplicates). Unquoted
    // items end at a blank or a control character too, so "a b" is two
    // items; blanks around items are dropped; "" inside quotes is one '"';
    // an unterminated quote takes the rest; a trailing ',' adds an empty
    // item. The text ends at a NUL character.
    // SetCommaText(CommaText()) gives back the same strings for every
    // unsorted dupAccept list whose strings hold no NUL character, empty
    // strings included ([""] -> "\"\"", ["", "a"] -> ",a", ["a", ""] -> "a,").
    void SetCommaText(const QString& text);

    // Every string followed by CR LF; empty for an empty list.
    [[nodiscard]] QString Text() const;
    // Replaces the content with the lines of `text`, split at CR LF, LF or a
    // lone CR; a final line break does not add an empty line. Ends at NUL.
    void SetText(const QString& text);

    // Binary search for `s`; returns whether it is there and sets `index` to
    // its position, or to where it would be inserted. With dupAccept it finds
    // the first of equal strings. Only meaningful on a sorted list.
    bool Find(const QString& s, int& index) const;

    [[nodiscard]] bool Sorted() const;
    // Turning it on sorts the list (equal strings keep their order); existing
    // duplicates stay.
    void SetSorted(bool sorted);
    [[nodiscard]] TDuplicates Duplicates() const;
    void SetDuplicates(TDuplicates duplicates);
    [[nodiscard]] bool CaseSensitive() const;
    // A sorted list is sorted again under the new comparison.
    void SetCaseSensitive(bool caseSensitive);
    [[nodiscard]] bool OwnsObjects() const;

    // Stable sort under the list's comparison; a no-op on a sorted list.
    void Sort();

    // Replaces the content with `other`'s strings and object pointers, added
    // in order through AddObject (this list's Sorted and Duplicates apply).
    // Ownership never moves: an owning list throws, unchanged, when `other`
    // holds any object.
    void Assign(const TStringList& other);

    [[nodiscard]] QStringList toQStringList() const;

    [[nodiscard]] const_iterator begin() const;
    [[nodiscard]] const_iterator end() const;

protected:
    // How an owning list frees an object. Throws when clearing the deleter of
    // an owning list that holds objects.
    void setObjectDeleter(void (*deleter)(void*));

private:
    [[nodiscard]] int compareStrings(QStringView a, QStringView b) const;
    [[nodiscard]] bool holdsObjects() const;
    void checkIndex(int index) const;
    void checkCanStore(const void* object) const;
    void insertItem(int index, const QString& s, void* object);
    void freeObject(void* object) const;
    void freeRefused(void* object) const;

    std::vector<Item> items_;
    void (*deleter_)(void*) = nullptr;
    TDuplicates duplicates_ = TDuplicates::dupIgnore;
    bool ownsObjects_ = false;
    bool sorted_ = false;
    bool caseSensitive_ = false;
};

// A list of strings with objects of one type T, typed on the way in and out.
// An owning list frees its objects with `delete`.
template<class T>
class TObjectStringList : public TStringList
{
public:
    explicit TObjectStringList(bool ownsObjects = false)
        : TStringList(ownsObjects)
    {
        setObjectDeleter(&deleteObject);
    }

    [[nodiscard]] T* Object(int index) const { return static_cast<T*>(Objects(index)); }
    int AddObject(const QString& s, T* object) { return TStringList::AddObject(s, object); }
    void InsertObject(int index, const QString& s, T* object) { TStringList::InsertObject(index, s, object); }
    T* ExtractObject(int index) { return static_cast<T*>(Extract(index)); }

private:
    static void deleteObject(void* object) { delete static_cast<T*>(object); }
};

} // namespace qal
