// The compiler's thread library, linked into ours, keeps an event and a handle of the thread for every thread
// that passed through it, and lets go of them when the thread ends. The thread that unloads us lives on:
// without this file each loading would leave both behind. Two semaphores, of the first exception thrown, are
// out of reach and stay.
#if defined(_WIN32) && defined(__GNUC__)

#include <windows.h>

extern "C" const IMAGE_TLS_DIRECTORY _tls_used;

namespace {

/// Before the library goes, tells all that follows the threads that this one ends.
void NTAPI EndThread(PVOID module, DWORD reason, PVOID processEnds) {
    if (reason != DLL_PROCESS_DETACH || processEnds != nullptr) {
        return;
    }
    const auto* callback = reinterpret_cast<const PIMAGE_TLS_CALLBACK*>(_tls_used.AddressOfCallBacks);
    for (; *callback != nullptr; ++callback) {
        if (*callback != EndThread) {
            (*callback)(module, DLL_THREAD_DETACH, nullptr);
        }
    }
}

} // namespace

// The linker sorts what is called for threads by the section's last letter: the C library's own begin with C.
extern "C" [[gnu::section(".CRT$XLB"), gnu::used]] const PIMAGE_TLS_CALLBACK orvaThreadCallback = EndThread;

#endif
