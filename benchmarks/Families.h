#pragma once

// Each family of benchmarks registers itself and the ratios that it is judged by.

void RegisterParseBenchmarks();
void RegisterWriteBenchmarks();

/// Values that are counted and not timed, measured at once.
void MeasureHeaps();
