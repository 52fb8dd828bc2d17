#pragma once

/// Puts the processor's vector registers into the state in which code for their lower halves alone,
/// as this library is, runs at full speed.
///
/// Code that uses the upper halves, too, is to clear them before it returns, and there are
/// libraries that do not. All 128-bit instructions of the thread then wait for whatever wrote the
/// same register before, and a parse takes up to half as long again. To be called at the beginning
/// of long work; takes a few nanoseconds.
void ClearUpperVectorHalves() noexcept;
