/// Makes chosen calls of a device fail.
#pragma once

namespace orva::test {

/// Counts the calls of one function of a device, and tells which of them are to fail.
struct CallFault {
    enum class Reach { Once, FromThenOn };

    int failingCall = 0; ///< counted from 1; 0 lets all succeed
    Reach reach = Reach::Once;
    int calls = 0;

    /// Counts a call.
    bool Strikes() {
        ++calls;
        return failingCall != 0 &&
               (calls == failingCall || (reach == Reach::FromThenOn && calls > failingCall));
    }
};

} // namespace orva::test
