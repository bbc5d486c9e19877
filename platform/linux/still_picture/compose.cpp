#include "still_picture/compose.h"

#include "still_picture/row_scaler.h"
#include "video_plane/plane_drawing.h"

namespace platform {

Size size_to_keep(const Size &stored, const Size &panel)
{
    const Size straight = fit(stored, panel);
    const Size turned = fit(stored, panel.turned());
    const Size larger = straight.area() >= turned.area() ? straight : turned;
    return stored.holds(larger) ? larger : stored;
}

void compose(const Image &image, const Size &stored, const Orientation &turn, PlaneBuffer &out)
{
    const Size plane = {out.width(), out.height()};
    const Rect area = centred(fit(turn.of(stored), plane), whole(plane));

    const Size wanted = turn.of(area.size()); // in the file's own orientation
    Image scaled;
    if (image.size != wanted)
        scaled = RowScaler::scale(image, wanted);
    const Image &exact = image.size != wanted ? scaled : image;
    copy_turned(exact.pixels.get(), turn, pixels_of(out).part(area));
    black_out_around(area, out);
}

} // namespace platform
