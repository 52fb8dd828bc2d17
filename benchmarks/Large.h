#pragma once

/// Prints, for documents of 10 MB to 1 GB, time and memory for each byte, and what a file takes
/// that is too large to be read at once. Needs 10 GB of memory and 1.1 GB in the temporary folder.
void PrintLarge();
