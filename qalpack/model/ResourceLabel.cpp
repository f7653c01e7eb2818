// SPDX-License-Identifier: MIT
#include "qalpack/model/ResourceLabel.h"

#include <iterator>

namespace qal {

const std::vector<Label>& resourceLabels()
{
    static const std::vector<Label> labels(std::begin(resourceLabelTable), std::end(resourceLabelTable));
    return labels;
}

} // namespace qal
