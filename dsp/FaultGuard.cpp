#include "dsp/ProcessorFeatures.h"

#include <csetjmp>

#ifdef _WIN32

namespace orva::dsp {
namespace {

// A structured exception frame made by hand, as the compiler has no keyword for it. The frame stands on the
// stack and is linked at fs:[0]; the system hands its own address to the handler with the exception.

constexpr int kContinueSearch = 1;
/// Flags of an exception record whose frames are being unwound.
constexpr unsigned long kUnwindFlags = 0x66;

struct ExceptionRecord {
    unsigned long code;
    unsigned long flags;
};

struct ExceptionFrame {
    ExceptionFrame* previous;
    int (*handler)(ExceptionRecord* record, ExceptionFrame* frame, void* context, void* dispatcher);
    std::jmp_buf recovery;
};

int RecoverFromFault(ExceptionRecord* record, ExceptionFrame* frame, void*, void*) {
    if ((record->flags & kUnwindFlags) != 0) {
        return kContinueSearch;
    }
    std::longjmp(frame->recovery, 1);
}

void Link(ExceptionFrame* frame) {
    __asm__ volatile("movl %%fs:0, %0" : "=r"(frame->previous));
    __asm__ volatile("movl %0, %%fs:0" ::"r"(frame) : "memory");
}

void Unlink(const ExceptionFrame* frame) {
    __asm__ volatile("movl %0, %%fs:0" ::"r"(frame->previous) : "memory");
}

} // namespace

bool ExecutesWithoutFault(void (*instruction)()) {
    ExceptionFrame frame{};
    frame.handler = RecoverFromFault;
    Link(&frame);
    // The frame is linked first: the jump back unwinds to what stood at fs:[0] when the place was marked.
    if (setjmp(frame.recovery) != 0) {
        Unlink(&frame);
        return false;
    }
    instruction();
    Unlink(&frame);
    return true;
}

} // namespace orva::dsp

#else

#include <csignal>

namespace orva::dsp {
namespace {

sigjmp_buf recovery;

void RecoverFromFault(int) {
    siglongjmp(recovery, 1);
}

} // namespace

bool ExecutesWithoutFault(void (*instruction)()) {
    struct sigaction action {};
    struct sigaction previous {};
    action.sa_handler = RecoverFromFault;
    sigemptyset(&action.sa_mask);
    sigaction(SIGILL, &action, &previous);
    // The mask is saved and restored: the handler is left with the signal blocked.
    const bool completed = sigsetjmp(recovery, 1) == 0;
    if (completed) {
        instruction();
    }
    sigaction(SIGILL, &previous, nullptr);
    return completed;
}

} // namespace orva::dsp

#endif
