#pragma once

namespace ticpp {

/// Raises Exception for a text that TinyXML cannot parse without harm. Its parser calls itself for each
/// level of elements, so nesting costs stack, and compares each attribute with all others of its element,
/// so their number costs time; both end at 256 here, where XmlLite draws the line for nesting.
/// xml: UTF-8. Whether the text is well-formed is not looked at.
void CheckLimits(const char* xml);

} // namespace ticpp
