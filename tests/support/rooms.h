// The library's rooms by their short names.
#pragma once

namespace morvunp {
namespace cab {}
namespace frame {}
namespace iso {}
namespace output {}
namespace platform {}
namespace rar {}
namespace sevenzip {}
}  // namespace morvunp

namespace cab = morvunp::cab;
namespace frame = morvunp::frame;
namespace iso = morvunp::iso;
namespace output = morvunp::output;
namespace platform = morvunp::platform;
namespace rar = morvunp::rar;
namespace sevenzip = morvunp::sevenzip;
