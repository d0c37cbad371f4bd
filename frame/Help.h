#pragma once

#include <Lodex/utils/CString.h>

namespace Kelvane {

/// Key of a topic of the module's own help, such as "dox_FlowUnitAnalysis".
[[nodiscard]] Lodex::CopyCString help_topic_key(const Lodex::CString& topic);

/// Key of a place in the user documentation of stratigraphic grids, with the host's general help as fall-back.
[[nodiscard]] Lodex::CopyCString help_document_key(const Lodex::CString& anchor);

/// Opens the help on a key.
void show_help(const Lodex::CopyCString& key);

} // namespace Kelvane
