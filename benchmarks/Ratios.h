#pragma once

#include <string>
#include <vector>

/// One figure that this library is judged by: the time or size named `subject` divided by the one
/// named `reference`, which must not exceed `limit` (0: no limit).
struct Ratio
{
    std::string work;
    std::string document;
    std::string subject;
    std::string reference;
    double limit = 0;
};

/// Says that the table shows a ratio. `subject` and `reference` are names of benchmarks or values.
void AddRatio(Ratio ratio);
/// Gives a value that was not measured as a time, such as bytes a source byte. With the reference
/// "1" it stands for itself.
void AddValue(const std::string& name, double value);

/// Has the process keep the memory that it once got, so that no run but the first pays for getting
/// it, unless "--cold" is among the arguments, which is taken out of them. Call it first.
void SetUpHeap(std::vector<char*>& arguments);

/// Runs the registered benchmarks and prints the ratios as a Markdown table. Takes the flags of
/// Google Benchmark and these:
///   --check     fail when a ratio is above its limit
///   --rounds=N  run all N times, in turns (else once); a ratio is the median of those of each
///   round
///
/// Returns the exit status of the program: 1 when it fails, which it always does when a benchmark
/// says that it could not measure, or when one was run and what it is compared with was not; 2 when
/// it does not know a flag.
int RunAndPrintRatios(std::vector<char*> arguments);
