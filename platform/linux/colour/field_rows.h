/**
 * The inner loops that fill the rows a field lacks, in as many versions as the processor may have
 * instruction sets. Any thread.
 */
#pragma once

namespace platform::field_rows {

/** The rows around one that a field lacks, of that field and of those around it in time. */
struct Rows {
    const void *own[4];         ///< three and one above, one and three below
    const void *earlier_own[2]; ///< of the field two before: one above, one below
    const void *later_own[2];   ///< of the field two after
    const void *before[5]; ///< of the field before: four and two above, at it, two and four below
    const void *after[5];  ///< of the field after
};

/** One version of all of it. */
struct FieldVersion {
    /**
     * Makes the row, of samples of 8 bits or of 16.
     *
     * @param noise   samples have not moved where the mean of two fields is off by no more from
     *                each, twice as much being between them; negative: all have
     * @param largest of what a sample can be
     */
    void (*fill_8)(const Rows &rows, int samples, int noise, int largest, void *to);
    void (*fill_16)(const Rows &rows, int samples, int noise, int largest, void *to);
};

/** The one that every processor of this kind has. */
extern const FieldVersion BASE;
#if defined(__x86_64__)
extern const FieldVersion AVX2;
#endif

} // namespace platform::field_rows
