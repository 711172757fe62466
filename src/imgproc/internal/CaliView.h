// What the file check and the list of available optics see of the calibration data: all of it in
// order, without a record to free for each answer. Not installed.
#pragma once

#include <cstddef>
#include <vector>

#include "imgproc/Cali.h"

namespace dax {

class CaliView {
public:
    explicit CaliView(ConfigCali& cali) : m_cali(cali) {}

    /// Whether any description was ever loaded, even if the one held now is the built-in one again.
    bool hasEverLoaded() const { return m_cali.m_hasEverLoaded; }

    std::size_t opticsCount() const { return m_cali.m_optics.size(); }

    /// What names the optics at `index`, which there is. The next queries that name the same one
    /// find it at once.
    OPTICS keyAt(std::size_t index) {
        m_cali.m_lastAsked = index;
        return {m_cali.m_optics[index].FOV, m_cali.m_optics[index].Text.get()};
    }

    /// The ranges that queries with the key of the optics at `index` find: those of the first
    /// optics with that key.
    const std::vector<TemperatureRange>& rangesByKeyOf(std::size_t index) const {
        return m_cali.m_optics[m_cali.m_index.firstOfSame[index]].TempRanges;
    }

private:
    ConfigCali& m_cali;
};

}  // namespace dax
