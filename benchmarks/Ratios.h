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

/// Runs the registered benchmarks and prints the ratios of their medians as a Markdown table.
/// Returns the number of ratios above their limits.
int RunAndPrintRatios(int argc, char** argv);
