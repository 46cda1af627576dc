#ifndef RADIO_BOARD_VERDICTJSON_H
#define RADIO_BOARD_VERDICTJSON_H

#include "radio/board/Verdict.h"
#include "radio/files/Json.h"

/** A verdict as programs are told it. */
namespace Radio {

/** "pass", "fail" or "none". */
const char* verdictWord(const Verdict& verdict);

/** "pass", "fail" or null, as the member "verdict" of an event. */
Json verdictJson(const Verdict& verdict);

/** Each limit and what came of it, as the member "limits" of an event. */
Json limitsJson(const Verdict& verdict);

} // namespace Radio

#endif
