#include "colour/colour_space.h"

namespace platform {

namespace {

/** D65, the white of all of television. */
constexpr Chromaticity WHITE = {0.3127, 0.3290};

using Vector3 = std::array<double, 3>;

Vector3 xyz_of(const Chromaticity &colour)
{
    return {colour.x / colour.y, 1, (1 - colour.x - colour.y) / colour.y};
}

Vector3 product(const Matrix3 &matrix, const Vector3 &vector)
{
    Vector3 result = {};
    for (int row = 0; row < 3; ++row) {
        for (int i = 0; i < 3; ++i)
            result[row] += matrix[row][i] * vector[i];
    }
    return result;
}

Matrix3 inverse(const Matrix3 &m)
{
    // The minor of a place, with its sign, is that of the following two rows and columns.
    const auto minor = [&](int row, int column) {
        const int r1 = (row + 1) % 3;
        const int r2 = (row + 2) % 3;
        const int c1 = (column + 1) % 3;
        const int c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    double determinant = 0;
    for (int i = 0; i < 3; ++i)
        determinant += m[0][i] * minor(0, i);
    Matrix3 result = {};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            result[column][row] = minor(row, column) / determinant;
    }
    return result;
}

Matrix3 xyz_from_rgb(const Primaries &primaries)
{
    const Vector3 lights[] = {xyz_of(primaries.red), xyz_of(primaries.green),
                              xyz_of(primaries.blue)};
    Matrix3 result = {};
    for (int row = 0; row < 3; ++row) {
        for (int light = 0; light < 3; ++light)
            result[row][light] = lights[light][row];
    }
    const Vector3 strengths = product(inverse(result), xyz_of(WHITE));
    for (auto &row : result) {
        for (int light = 0; light < 3; ++light)
            row[light] *= strengths[light];
    }
    return result;
}

} // namespace

Matrix3 product(const Matrix3 &left, const Matrix3 &right)
{
    Matrix3 result = {};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            for (int i = 0; i < 3; ++i)
                result[row][column] += left[row][i] * right[i][column];
        }
    }
    return result;
}

Matrix3 rgb_from_yuv(const ColourSpace &space)
{
    const double kg = 1 - space.kr - space.kb;
    const double red = 2 * (1 - space.kr);
    const double blue = 2 * (1 - space.kb);
    return {{{1, 0, red}, {1, -blue * space.kb / kg, -red * space.kr / kg}, {1, blue, 0}}};
}

Matrix3 to_bt709(const Primaries &primaries)
{
    return product(inverse(xyz_from_rgb(BT709_PRIMARIES)), xyz_from_rgb(primaries));
}

Quantization quantization(const ColourSpace &space, int depth)
{
    const double unit = 1 << (depth - 8);
    const double largest = 256 * unit - 1;
    if (space.full_range)
        return {0, largest, 128 * unit, largest};
    return {16 * unit, 219 * unit, 128 * unit, 224 * unit};
}

} // namespace platform
