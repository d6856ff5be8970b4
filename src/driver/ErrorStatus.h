#pragma once

namespace installer {

// Tells the graphical installer that a check has failed: for false, puts the empty marker file in
// place, owned by the user and open to everybody. For true nothing happens; an old marker stays.
void setHotfixErrorStatus(bool status);

}  // namespace installer
