#pragma once

namespace trel::host {

/// From now on an interrupt from the terminal, and a request to end, are kept for those
/// who ask; one that comes some seconds after the first ends the program at once.
void catchInterrupts();

/// Whether one came.
bool wasInterrupted();

/// Ends the program as that interrupt would have, if one came: who started it sees that
/// it was interrupted.
void passInterruptOn();

}  // namespace trel::host
