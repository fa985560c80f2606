// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_COMPARE_MEASURES_H
#define KOVASMGR_BENCH_COMPARE_MEASURES_H

#include <cstddef>

// Each prints one line: the measure's name and what was measured, as key=value.

/// What a write of so many bytes costs, and a bare write(2) to the same terminal in between; in
/// wall time, medians.
void MeasureWrite(size_t bytes, size_t turns);

/// How long a few bytes take from the far end's write to the sink, at random moments.
void MeasureDelivery(size_t ports, size_t samples);

/// What arrives while every far end sends as fast as its terminal takes it, and what a megabyte
/// costs of a processor. Every byte is compared.
void MeasureThroughput(size_t ports, size_t seconds);

/// What is lost when every far end sends 300,000 bytes a second and does not wait for anybody, as
/// a line of 3 megabaud does. Every byte is compared.
void MeasurePaced(size_t ports, size_t seconds);

/// What open ports cost while nothing arrives.
void MeasureIdle(size_t ports, size_t seconds);

/// What a list of the attached ports costs.
void MeasureEnumeration(size_t ports, size_t turns);

#endif
