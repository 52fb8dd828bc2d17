#pragma once

// Each family of benchmarks registers itself and the ratios that it is judged by.

void RegisterParseBenchmarks();
void RegisterWriteBenchmarks();
void RegisterTreeBenchmarks();
void RegisterDiagnosticsBenchmarks();
void RegisterTextBenchmarks();
void RegisterFrontDoorBenchmarks();
void RegisterQueryBenchmarks();

/// Values that are counted and not timed, measured at once.
void MeasureHeaps();
