#include "base/bands.h"

#include <future>

namespace platform {

void Bands::run(int rows, int wanted, const Work &work)
{
    const int bands = count(wanted);
    while (static_cast<int>(helpers_.size()) < bands - 1)
        helpers_.push_back(std::make_unique<WorkerThread>("picture bands"));

    const auto do_band = [&](int band) {
        const int first = rows * band / bands;
        work(band, first, rows * (band + 1) / bands - first);
    };
    std::vector<std::promise<void>> done(static_cast<size_t>(bands - 1));
    for (int band = 1; band < bands; ++band) {
        const auto index = static_cast<size_t>(band - 1);
        const bool posted = helpers_[index]->post([&, band, index] {
            do_band(band);
            done[index].set_value();
        });
        if (!posted) {
            do_band(band);
            done[index].set_value();
        }
    }
    do_band(0);
    for (std::promise<void> &band : done)
        band.get_future().wait();
}

} // namespace platform
