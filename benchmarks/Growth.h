#pragma once

/// Doubles inputs that could be expected to take more than linear time, and prints for each the
/// exponent of its growth as a Markdown table: 1 is linear, 2 quadratic. Times are those of the
/// processor, the least of several runs.
void PrintGrowth();
