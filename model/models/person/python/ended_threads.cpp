// What becomes of a thread that the interpreter ends.
//
// A daemon thread that wants the global lock back from an interpreter that is being finalised is ended by pthread_exit,
// and that unwinds the stack as an exception does. Our destructors and handlers would then touch objects without the
// lock, while the main thread takes the interpreter apart. Later versions of CPython have such a thread wait for the
// end of the process instead, and so it does here as soon as the unwinding comes to a frame of ours that has anything
// to clean up: the unwinder first asks the frame's personality routine, and the linker puts the one below in its place.

#include <unistd.h>
#include <unwind.h>

namespace {

[[noreturn]] void wait_for_the_end_of_the_process() {
    for (;;) pause();
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): what the linker calls a function and the one in its place
extern "C" {

_Unwind_Reason_Code __real___gxx_personality_v0(int version, _Unwind_Action actions, _Unwind_Exception_Class kind,
                                                _Unwind_Exception* exception, _Unwind_Context* context);

_Unwind_Reason_Code __wrap___gxx_personality_v0(int version, _Unwind_Action actions, _Unwind_Exception_Class kind,
                                                _Unwind_Exception* exception, _Unwind_Context* context) {
    // No exception of any language unwinds by force.
    if ((actions & _UA_FORCE_UNWIND) != 0) wait_for_the_end_of_the_process();
    return __real___gxx_personality_v0(version, actions, kind, exception, context);
}
}
// NOLINTEND(bugprone-reserved-identifier)
