// Memory of a program that runs for days.
#pragma once

namespace quor_host {

/// From now on a large block goes back to the system as soon as it is free. A library of C may keep
/// it for the next one, for each thread its own.
void give_back_large_blocks();

}  // namespace quor_host
