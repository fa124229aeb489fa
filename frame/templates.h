// The library's dialog templates.
#pragma once

namespace morvunp::frame {

/// Makes the templates available to CDialog. Called when the library loads.
void RegisterTemplates();

}  // namespace morvunp::frame
