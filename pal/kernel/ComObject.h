/// @file ComObject.h
/// The IUnknown part of every service object: an atomic reference count, born at one.
#pragma once

#include <unknwn.h>

#include <atomic>

namespace pal
{
/// @tparam Derived    the concrete class; deleted with the last Release()
/// @tparam Primary    interface that the class derives from; also answers for IUnknown
/// @tparam Bases      further interfaces that @p Primary itself extends and that can be asked for
template <class Derived, class Primary, class... Bases> class ComObject : public Primary
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override
    {
        if (ppObject == nullptr)
            return E_POINTER;
        *ppObject = nullptr;
        if (iid == IID_IUnknown || iid == InterfaceId<Primary>::value || (... || (iid == InterfaceId<Bases>::value)))
        {
            AddRef();
            *ppObject = static_cast<Primary*>(this);
            return S_OK;
        }
        return static_cast<Derived*>(this)->QueryFurther(iid, ppObject);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
            delete static_cast<Derived*>(this);
        return left;
    }

    /// Interfaces beyond the primary one; a class with several hides this.
    HRESULT QueryFurther(REFIID, void**) { return E_NOINTERFACE; }

    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

protected:
    ComObject() = default;
    ~ComObject() = default;

private:
    std::atomic<ULONG> m_references{1};
};
} // namespace pal
