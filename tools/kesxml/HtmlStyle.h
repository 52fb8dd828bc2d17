#pragma once

/// The style sheet of a report, in ASCII. It refers to nothing else.
extern const char* const c_htmlStyle;
