#ifndef RADIO_SESSION_JUDGE_H
#define RADIO_SESSION_JUDGE_H

#include "radio/session/Command.h"
#include "radio/session/LastCommand.h"
#include "radio/session/RadioUnit.h"
#include "radio/session/SessionListener.h"

namespace Radio {

/** Whether `expectation` holds for the radio as it is and for what came of the last command. */
Judgement judge(const Expectation& expectation, RadioUnit& radio, const LastCommand& last);

} // namespace Radio

#endif
