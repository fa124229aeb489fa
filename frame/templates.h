// The library's dialog templates.
#pragma once

namespace frame {

/// Makes the templates available to CDialog. Called when the library loads.
void RegisterTemplates();

}  // namespace frame
