#pragma once
// An owning COM interface pointer. mingw-w64 10's Microsoft::WRL::ComPtr
// adds a reference in Attach (the SDK's takes the caller's), so code built
// with both toolchains cannot rely on it; this one behaves like the SDK's.

#include <cstddef>
#include <utility>

namespace connectkit::win {

template <typename Interface>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) {}
    explicit ComPtr(Interface* pointer) : pointer_(pointer) { AddReference(); }
    ComPtr(const ComPtr& other) : pointer_(other.pointer_) { AddReference(); }
    ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
    ~ComPtr() { Reset(); }

    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(pointer_, other.pointer_);
        return *this;
    }

    Interface* Get() const { return pointer_; }
    Interface* operator->() const { return pointer_; }
    explicit operator bool() const { return pointer_ != nullptr; }

    // For an [out] interface pointer: drops what this held first.
    Interface** GetAddressOf() {
        Reset();
        return &pointer_;
    }
    // Takes over a reference the caller owns.
    void Attach(Interface* pointer) {
        Reset();
        pointer_ = pointer;
    }
    // Hands the reference to the caller.
    Interface* Detach() { return std::exchange(pointer_, nullptr); }
    void Reset() {
        if (auto* pointer = std::exchange(pointer_, nullptr)) {
            pointer->Release();
        }
    }

private:
    void AddReference() {
        if (pointer_) {
            pointer_->AddRef();
        }
    }

    Interface* pointer_ = nullptr;
};

}  // namespace connectkit::win
