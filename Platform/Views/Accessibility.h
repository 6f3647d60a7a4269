#pragma once

namespace velloren {

/// From now on assistive programs are told what the widgets of this layer are: a label is a text, a popover a
/// dialog. Main thread only, once, after the application object was made.
void describeWidgetsToAssistivePrograms();

} // namespace velloren
