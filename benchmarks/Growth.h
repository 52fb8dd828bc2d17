#pragma once

/// Doubles inputs that could be expected to take more than linear time, and prints for each the
/// exponent of its growth as a Markdown table: 1 is linear, 2 quadratic. Times are those of the
/// processor, the least of several runs.
///
/// Returns how many inputs grow clearly faster than linearly: the exponent is above 1.5, and the
/// largest takes more than 50 ms. The margins are for noise. Linear work was seen at up to 1.4,
/// because larger inputs miss caches more often; where it is little more than one look at each
/// byte, at up to 1.8, but then it takes less time than quadratic work on the sizes in use can.
int PrintGrowth();
