// Pictures of dialogs as a person would see them: drawn with cairo, texts laid out with pango. The
// host picks its fonts itself (DejaVu Sans, with MotoyaLCedar for Japanese; a bold or italic face they
// lack is emboldened or slanted from the regular one) and sees no other font of the machine, so a
// picture and its measurements are the same wherever they are made.
// Host-side only.
#pragma once

#include "achost/Dialogs.hpp"
#include "achost/Resources.hpp"

#include <string>
#include <vector>

namespace achost {

// A text its frame cuts off: what the text needs and what the frame gives it, in pixels.
struct CutText {
    short item = 0; // 0 for the dialog's title
    std::string text;
    int needWidth = 0, needHeight = 0;
    int frameWidth = 0, frameHeight = 0;
};

// Draws `dialog` as it stands: the title bar, then the client area at the dialog's size with every
// visible item at its frame (disabled ones greyed), list rows with their icons and check marks. The
// icons are the 'GICN' images of `resources`. Writes the picture to `path` as PNG; false with the
// reason when the fonts are missing or the file cannot be written.
GS_HOST_EXPORT bool WriteDialogPicture(const Dialog& dialog, const ResourceSet& resources,
                                       const std::string& path, std::string* error);

// The texts of `dialog` that their frames cut off, laid out as the picture lays them out (wrapped
// where the item wraps; a list row's text beside its icon), the title first, then by item. Only what
// is shown counts: hidden items, the list rows below a list's bottom and the text of edit fields
// (which scroll) are left out. A text is cut off when any of its ink lies outside its frame. False
// with the reason when the fonts are missing.
GS_HOST_EXPORT bool FindCutTexts(const Dialog& dialog, const ResourceSet& resources,
                                 std::vector<CutText>* cut, std::string* error);

} // namespace achost
