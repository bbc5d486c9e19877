/*
 * Compiled once for each instruction set, as the FieldVersion of the name ROWS_VERSION. No function
 * of the standard library is used: one that is compiled here for a newer processor might be the one
 * that all of the program gets.
 */
#include "colour/field_rows.h"

#include <cstdint>
#include <cstring>

#ifndef ROWS_VERSION
#define ROWS_VERSION BASE
#endif

namespace platform::field_rows {

namespace {

template <typename Number> inline Number larger(Number a, Number b)
{
    return a < b ? b : a;
}

template <typename Number> inline Number smaller(Number a, Number b)
{
    return b < a ? b : a;
}

// Numbers that are cut at each step are what vectors are made of, as many as fit.

template <typename Number> inline Number plus(Number a, Number b)
{
    return static_cast<Number>(a + b);
}

template <typename Number> inline Number minus(Number a, Number b)
{
    return static_cast<Number>(a - b);
}

template <typename Number> inline Number apart(Number a, Number b)
{
    return minus(larger(a, b), smaller(a, b));
}

template <int BITS, typename Number> inline Number scaled(Number value)
{
    return static_cast<Number>(value >> BITS);
}

constexpr int STRETCH = 256; ///< samples at a time, which the nearest cache holds

// Letters that run past have gaps that are now and then as far apart as they run in a frame: there
// the fields agree though all is moving. A few samples beside they do not.
constexpr int NEARBY = 8;

// The loops work on a stretch, which the caller's memory cannot overlap: of that the compiler makes
// vectors.

/** By how much samples change from field to field. */
template <typename Sample, typename Number>
void measure(const Rows &rows, int first, int samples, Number *moved)
{
    const auto row = [first](const void *from) {
        return static_cast<const Sample *>(from) + first;
    };
    const Sample *above = row(rows.own[1]), *below = row(rows.own[2]);
    const Sample *earlier_above = row(rows.earlier_own[0]);
    const Sample *earlier_below = row(rows.earlier_own[1]);
    const Sample *later_above = row(rows.later_own[0]), *later_below = row(rows.later_own[1]);
    const Sample *before[3], *after[3];
    for (int i = 0; i < 3; ++i) {
        before[i] = row(rows.before[i + 1]);
        after[i] = row(rows.after[i + 1]);
    }
    for (int x = 0; x < samples; ++x) {
        const Number c = above[x], e = below[x];
        const Number change = larger(apart<Number>(before[0][x], after[0][x]),
                                     larger(apart<Number>(before[1][x], after[1][x]),
                                            apart<Number>(before[2][x], after[2][x])));
        const Number change_before =
            plus(apart<Number>(earlier_above[x], c), apart<Number>(earlier_below[x], e));
        const Number change_after =
            plus(apart<Number>(later_above[x], c), apart<Number>(later_below[x], e));
        moved[x] = scaled<1>(larger(change, larger(change_before, change_after)));
    }
}

// Where nothing moved, the fields before and after have the row. Where something did, it is made of
// the field's own rows, with the fine detail that the other fields have in common; and it does not
// go further from theirs than what moved there can explain.
template <typename Sample, typename Number>
void fill_stretch(const Rows &rows, int first, int samples, const Number *moved, Number noise,
                  Number largest, Sample *to)
{
    const auto row = [first](const void *from) {
        return static_cast<const Sample *>(from) + first;
    };
    const Sample *above = row(rows.own[1]), *below = row(rows.own[2]);
    const Sample *above3 = row(rows.own[0]), *below3 = row(rows.own[3]);
    const Sample *before[5], *after[5];
    for (int i = 0; i < 5; ++i) {
        before[i] = row(rows.before[i]);
        after[i] = row(rows.after[i]);
    }
    for (int x = 0; x < samples; ++x) {
        const Number c = above[x], e = below[x];
        const Number own = plus<Number>(c, e);
        const Number own3 = plus<Number>(above3[x], below3[x]);
        const Number at = plus<Number>(before[2][x], after[2][x]);
        const Number up = plus<Number>(before[1][x], after[1][x]);
        const Number down = plus<Number>(before[3][x], after[3][x]);
        const Number far =
            plus(plus<Number>(before[0][x], after[0][x]), plus<Number>(before[4][x], after[4][x]));
        const Number here = scaled<1>(at);

        // How far the row stands out between its neighbours, beyond what it does in its own field.
        const Number over_c = minus(here, c), over_e = minus(here, e);
        const Number over_up = minus(scaled<1>(up), c);
        const Number over_down = minus(scaled<1>(down), e);
        const Number top = larger(larger(over_c, over_e), smaller(over_up, over_down));
        const Number bottom = smaller(smaller(over_c, over_e), larger(over_up, over_down));
        const Number limit = larger(moved[x], larger(bottom, minus(Number{0}, top)));

        const Number plain = scaled<3>(static_cast<Number>(5 * own - own3 + 4));
        const Number detailed = scaled<5>(
            static_cast<Number>(6 * at - 4 * plus(up, down) + far + 17 * own - own3 + 16));
        const Number change = apart<Number>(before[2][x], after[2][x]);
        Number made = apart(c, e) > change ? detailed : plain;
        made = larger(made, minus(here, limit));
        made = smaller(made, plus(here, limit));
        made = smaller(larger(made, Number{0}), largest);
        to[x] = static_cast<Sample>(moved[x] <= noise ? here : made);
    }
}

template <typename Sample, typename Number>
void fill(const Rows &rows, int samples, int noise, int largest, void *to)
{
    for (int x = 0; x < samples; x += STRETCH) {
        const int count = smaller(STRETCH, samples - x);
        const int begin = larger(x - NEARBY, 0);
        const int end = smaller(x + count + NEARBY, samples);
        constexpr int SIZE = STRETCH + 2 * NEARBY;
        Number moved[SIZE] = {};
        measure<Sample>(rows, begin, end - begin, moved + NEARBY + begin - x);
        // The most of two, then of four and so on: in the end of all that are nearby.
        for (int step = 1; step <= NEARBY; step *= 2)
            for (int i = 0; i < SIZE - step; ++i)
                moved[i] = larger(moved[i], moved[i + step]);
        Sample filled[STRETCH];
        fill_stretch(rows, x, count, moved, static_cast<Number>(noise),
                     static_cast<Number>(largest), filled);
        memcpy(static_cast<Sample *>(to) + x, filled, count * sizeof *filled);
    }
}

void fill_8(const Rows &rows, int samples, int noise, int largest, void *to)
{
    fill<uint8_t, int16_t>(rows, samples, noise, largest, to);
}

void fill_16(const Rows &rows, int samples, int noise, int largest, void *to)
{
    fill<uint16_t, int32_t>(rows, samples, noise, largest, to);
}

} // namespace

const FieldVersion ROWS_VERSION = {fill_8, fill_16};

} // namespace platform::field_rows
