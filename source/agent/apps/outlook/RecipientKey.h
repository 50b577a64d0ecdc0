#pragma once

namespace vorlek {

/// The context key of a recipient of Outlook's type (1 To, 2 CC, 3 BCC), empty for another type.
const wchar_t* RecipientKey(long type);

} // namespace vorlek
