/**
 * Whole pictures out of the fields of interlaced ones: where nothing moves the rows of the fields
 * around it, in full height, and where something does rows that are made between the field's own.
 */
#pragma once

#include <cstddef>
#include <cstdint>

#include "colour/field_rows.h"

namespace platform {

/** One plane of three frames that follow each other in time; the same where there is no other. */
struct WovenPlanes {
    const uint8_t *before;
    const uint8_t *frame;
    const uint8_t *after;
    ptrdiff_t strides[3]; ///< bytes from row to row, of each
    int samples;          ///< in a row
    int rows;             ///< of both fields
    int sample_bytes;     ///< 1, or 2 of which all bits may count
    int largest;          ///< that a sample can be
};

/** Which of the frame's two fields becomes a picture. */
struct Field {
    bool first;  ///< the earlier one
    bool bottom; ///< the one of the odd rows
};

/** The best that the processor has. */
const field_rows::FieldVersion &best_field_rows();

/**
 * Writes some rows of a field's picture. Any thread, also several at a time.
 *
 * @param first  of the rows
 * @param to     where the picture begins, not those rows
 * @param stride bytes from row to row of `to`
 */
void fill_field(const WovenPlanes &planes, const Field &field, int first, int count, uint8_t *to,
                ptrdiff_t stride, const field_rows::FieldVersion &version = best_field_rows());

} // namespace platform
