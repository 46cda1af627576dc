#ifndef RADIOCTL_JUDGE_H
#define RADIOCTL_JUDGE_H

#include "Command.h"
#include "LastCommand.h"
#include "Radio.h"
#include "Reporter.h"

namespace Radioctl {

/** Whether `expectation` holds for the radio as it is and for what came of the last command. */
Judgement judge(const Expectation& expectation, Radio& radio, const LastCommand& last);

} // namespace Radioctl

#endif
