// Handles that can be checked: whatever value a client passes, a lookup answers the live object it
// was given for, or nothing, and never touches memory that is gone.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace atdp::services {

// A handle is a number: generation (32 bits), slot (28), kind (4). Each use of a slot is a new
// generation, so a stale handle differs from every later one of that slot; the kind keeps the
// handles of two tables apart.
//
// Lookups take no lock, since every small read makes one. Objects of different handles may be used
// on different threads; releasing a handle while another thread uses it is the client's error.
template <class Object, class Handle, std::uintptr_t Kind>
class HandleTable {
    static_assert(sizeof(std::uintptr_t) == 8 && Kind > 0 && Kind < 16);

 public:
    constexpr HandleTable() = default;

    Handle insert(std::shared_ptr<Object> object) {
        const std::lock_guard lock(mutex_);
        const std::uint32_t index = takeFreeSlot();
        Slot& slot = *slotAt(index);
        slot.object = std::move(object);
        slot.handle.store(
            std::uintptr_t{++slot.generation} << 32 | std::uintptr_t{index} << 4 | Kind,
            std::memory_order_release);
        return reinterpret_cast<Handle>(slot.handle.load(std::memory_order_relaxed));
    }

    // The object, or null; valid until the handle is released.
    Object* find(Handle handle) const {
        const Slot* slot = liveSlot(handle);
        return slot ? slot->object.get() : nullptr;
    }

    // As find, for a client that keeps the object beyond the handle.
    std::shared_ptr<Object> share(Handle handle) const {
        const Slot* slot = liveSlot(handle);
        return slot ? slot->object : nullptr;
    }

    // False when the handle is not live. The object goes when its last owner does.
    bool erase(Handle handle) {
        std::shared_ptr<Object> object;  // outlives the lock
        const std::lock_guard lock(mutex_);
        Slot* slot = liveSlot(handle);
        if (slot == nullptr) return false;
        slot->handle.store(0, std::memory_order_release);
        object = std::move(slot->object);
        freeSlots_.push_back(indexOf(handle));  // room was reserved when the page was made
        return true;
    }

    // Releases every handle and all memory. Not while other threads use the table.
    void clear() {
        const std::lock_guard lock(mutex_);
        for (auto& page : pages_) delete[] page.exchange(nullptr, std::memory_order_acq_rel);
        usedPages_ = 0;
        std::vector<std::uint32_t>().swap(freeSlots_);
    }

 private:
    struct Slot {
        std::atomic<std::uintptr_t> handle{0};  // 0: free
        std::uint32_t generation = 0;
        std::shared_ptr<Object> object;
    };
    // Pages stay where they are until clear(), so lookups need no lock.
    static constexpr std::uint32_t kPageSlots = 256;
    static constexpr std::uint32_t kPages = 1024;

    static std::uint32_t indexOf(Handle handle) {
        return reinterpret_cast<std::uintptr_t>(handle) >> 4 & 0x0FFF'FFFF;
    }

    Slot* slotAt(std::uint32_t index) const {
        if (index >= kPages * kPageSlots) return nullptr;
        Slot* page = pages_[index / kPageSlots].load(std::memory_order_acquire);
        return page ? page + index % kPageSlots : nullptr;
    }

    Slot* liveSlot(Handle handle) const {
        Slot* slot = slotAt(indexOf(handle));
        const bool live = slot && handle != nullptr &&
                          slot->handle.load(std::memory_order_acquire) ==
                              reinterpret_cast<std::uintptr_t>(handle);
        return live ? slot : nullptr;
    }

    std::uint32_t takeFreeSlot() {
        if (freeSlots_.empty()) addPage();
        const std::uint32_t index = freeSlots_.back();
        freeSlots_.pop_back();
        return index;
    }

    void addPage() {
        if (usedPages_ == kPages) throw std::bad_alloc();
        const std::uint32_t first = usedPages_ * kPageSlots;
        freeSlots_.reserve(std::size_t{first} + kPageSlots);
        pages_[usedPages_++].store(new Slot[kPageSlots], std::memory_order_release);
        for (std::uint32_t i = kPageSlots; i-- > 0;) freeSlots_.push_back(first + i);
    }

    std::mutex mutex_;
    std::array<std::atomic<Slot*>, kPages> pages_{};
    std::uint32_t usedPages_ = 0;
    std::vector<std::uint32_t> freeSlots_;
};

// Holds a module's only table of a type. It is cleared when the module is unloaded or the process
// ends, but never destroyed: static objects of a host may close their decoders later still, and
// then meet handles that are no longer live.
template <class Table>
class ModuleWide {
 public:
    constexpr ModuleWide() : table_() {}
    ~ModuleWide() { table_.clear(); }
    Table& operator*() { return table_; }

 private:
    union {
        Table table_;
    };
};

}  // namespace atdp::services
