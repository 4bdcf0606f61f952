// Spectra that stay in a plot while others are computed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/Plot2D.h"

namespace veltrac {

class KeptSpectra
{
public:
    bool isEmpty() const noexcept { return m_kept.empty(); }
    bool has(const std::shared_ptr<HsVariable>& spectrum) const;
    // Under a name, and in a colour that no other one has: the next result has the first. What was computed
    // stays in its file, though the file's name goes.
    void keep(std::shared_ptr<HsVariable> spectrum, const std::string& name);
    // Shows them in the plot of another result too.
    void addTo(Plot2D& plot) const;
    // Forgets them; they leave the plot, but for the present result.
    void drop(Plot2D& plot, const std::shared_ptr<HsVariable>& present);

private:
    std::vector<std::shared_ptr<HsVariable>> m_kept;
};

}  // namespace veltrac
