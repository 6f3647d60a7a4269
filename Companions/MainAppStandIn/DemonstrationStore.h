#pragma once

namespace velloren {

/// Fills the product's store with meetings around now, and logs a user in. The titles are such as other
/// people write: long, Chinese, Arabic, with an emoji.
void makeDemonstrationStore();

} // namespace velloren
