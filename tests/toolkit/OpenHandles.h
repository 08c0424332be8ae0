/// Handles of the running process.
#pragma once

namespace orva::test {

/// How many kernel objects' handles are open. Counted one by one, as Wine does not tell their number.
int CountOpenHandles();

} // namespace orva::test
