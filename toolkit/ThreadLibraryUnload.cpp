// The compiler's thread library, linked into ours, keeps an event and a handle of the thread for every thread
// that passed through it, and lets go of them when the thread ends. The thread that unloads us lives on:
// without this file each loading would leave both behind, and the slot for the threads' own data too, of
// which a process has a thousand: at the end of them the thread library ends the process. Two semaphores, of
// the first exception thrown, are out of reach and stay.
#if defined(_WIN32) && defined(__GNUC__)

#include <array>
#include <pthread.h>
#include <windows.h>

extern "C" const IMAGE_TLS_DIRECTORY _tls_used;

namespace {

constexpr DWORD kSlots = TLS_MINIMUM_AVAILABLE + 1024; // as many as a process can have
using SlotValues = std::array<void*, kSlots>;

SlotValues ReadSlots() {
    SlotValues values{};
    for (DWORD slot = 0; slot < kSlots; ++slot) {
        values[slot] = TlsGetValue(slot);
    }
    return values;
}

/// The thread library's slot, once it is known; freed when the static objects are gone.
class ThreadSlot {
public:
    ThreadSlot() = default;
    ~ThreadSlot() {
        if (slot != TLS_OUT_OF_INDEXES) {
            TlsFree(slot);
        }
    }
    ThreadSlot(const ThreadSlot&) = delete;
    ThreadSlot& operator=(const ThreadSlot&) = delete;

    /// It is the one that was emptied when the thread ended.
    void FindBy(const SlotValues& before) {
        for (DWORD candidate = 0; candidate < kSlots; ++candidate) {
            if (before[candidate] != nullptr && TlsGetValue(candidate) == nullptr) {
                slot = candidate;
            }
        }
    }

private:
    DWORD slot = TLS_OUT_OF_INDEXES;
};

// The first static object, and so the last to go.
[[gnu::init_priority(101)]] ThreadSlot threadSlot;

/// Before the library goes, tells all that follows the threads that this one ends.
void NTAPI EndThread(PVOID module, DWORD reason, PVOID processEnds) {
    if (reason != DLL_PROCESS_DETACH || processEnds != nullptr) {
        return;
    }
    pthread_self(); // there is something in the slot now
    const SlotValues before = ReadSlots();
    const auto* callback = reinterpret_cast<const PIMAGE_TLS_CALLBACK*>(_tls_used.AddressOfCallBacks);
    for (; *callback != nullptr; ++callback) {
        if (*callback != EndThread) {
            (*callback)(module, DLL_THREAD_DETACH, nullptr);
        }
    }
    threadSlot.FindBy(before);
}

} // namespace

// The linker sorts what is called for threads by the section's last letter: the C library's own begin with C.
extern "C" [[gnu::section(".CRT$XLB"), gnu::used]] const PIMAGE_TLS_CALLBACK orvaThreadCallback = EndThread;

#endif
