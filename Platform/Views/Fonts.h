#pragma once

#include <QFont>
#include <QString>
#include <QStringList>

namespace velloren::fonts {

/// Learns which fonts there are, and finds those that the texts need beside the usual one: what the first
/// text that shows, and the first in its script, would wait for otherwise. Takes tens of milliseconds and
/// about 1 MiB. Main thread only.
void prepareFor(const QStringList& texts);

/// `font` as it is where any font has the characters of `text`. Else with the family of the application's
/// font and one for each script that is in the text, the first few: without those, Qt tries the fonts that
/// there are one after the other for each character. Main thread only.
[[nodiscard]] QFont withFamiliesFor(const QString& text, const QFont& font);

} // namespace velloren::fonts
