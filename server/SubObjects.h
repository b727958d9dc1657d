#pragma once
#include <memory>

#include "platform/AutomationServer.h"
#include "server/ScpiChannel.h"

namespace cvn73100::server {

// The server's setting sub-objects. Each reads and writes the instrument's settings through `channel`
// (which must outlive it), refuses an argument outside its enumeration with SERVERERR_BAD_ARGUMENT and
// a reply outside it with SERVERERR_BAD_REPLY.
std::unique_ptr<IAcquisition> MakeAcquisition(ScpiChannel& channel);
std::unique_ptr<IAnalogChannels> MakeAnalogChannels(ScpiChannel& channel);
std::unique_ptr<ILogicChannel> MakeLogicChannel(ScpiChannel& channel);
std::unique_ptr<IMeasure> MakeMeasure(ScpiChannel& channel);
std::unique_ptr<ITimebase> MakeTimebase(ScpiChannel& channel);
std::unique_ptr<ITrigger> MakeTrigger(ScpiChannel& channel);
std::unique_ptr<ITrace> MakeTrace(ScpiChannel& channel);

}  // namespace cvn73100::server
