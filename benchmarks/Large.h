#pragma once

/// Prints, for documents of 10 MB to 1 GB, time and memory for each byte, and what a file takes
/// that is too large to be read at once. Needs 16 GB of memory and 1.1 GB in the temporary folder.
///
/// Returns how many costs a byte are more than 1.3 times as high for a document of 1 GB as for one
/// of 10 MB, with memory that the process has already. Where it has to come from the system, the
/// system decides what it costs.
/// Throws std::runtime_error when something cannot be measured.
int PrintLarge();
