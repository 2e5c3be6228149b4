/// @file OwnedItems.h
/// Lists of records that a clip owns and shows to its host as plain pointers. Where memory is short, a list keeps what
/// it has.
#pragma once

#include "engine/platform/NullReference.h"

#include <memory>
#include <new>
#include <vector>

/// Adds @p item, which was made with new and is taken over in any case; null is ignored.
template <class TItem> void AddOwned(std::vector<TItem*>& items, TItem* item)
{
    if (item == nullptr)
        return;
    std::unique_ptr<TItem> own(item);
    try
    {
        items.push_back(item);
        static_cast<void>(own.release()); // the list's from here on
    }
    catch (const std::bad_alloc&)
    {
    }
}

/// Adds a copy of each of the items of @p from, which may be the same list.
template <class TItem> void AddOwnedCopies(std::vector<TItem*>& items, const std::vector<TItem*>& from)
{
    try
    {
        const std::size_t count = from.size();
        for (std::size_t i = 0; i < count; ++i)
            AddOwned(items, new TItem(*from[i]));
    }
    catch (const std::bad_alloc&)
    {
    }
}

/// The pointers into @p out, which it returns; none of them where memory is short.
template <class TItem> std::vector<TItem*>& CopyPointers(const std::vector<TItem*>& items, std::vector<TItem*>& out)
{
    try
    {
        if (!IsNullReference(&out))
            out = items;
    }
    catch (const std::bad_alloc&)
    {
        out.clear();
    }
    return out;
}

template <class TItem> void DeleteOwned(std::vector<TItem*>& items)
{
    for (const TItem* const item : items)
        delete item;
    items.clear();
}
