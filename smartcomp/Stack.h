#pragma once

namespace trel::smartcomp {

/// Ends a recursion before the stack of this thread does, for the sources of the
/// library only.
/// \throws std::runtime_error when less is left than an orderly end needs.
void checkStack();

}  // namespace trel::smartcomp
