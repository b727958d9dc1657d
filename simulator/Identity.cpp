#include "simulator/Identity.h"

namespace cvn73100::sim {

std::string Identity::Reply() const {
  const std::string* fields[] = {&manufacturer, &model, &serial, &firmware};
  int last = 3;
  while (last >= 0 && fields[last]->empty()) --last;
  std::string reply;
  for (int i = 0; i <= last; ++i) {
    if (i > 0) reply += ',';
    reply += *fields[i];
  }
  return reply;
}

}  // namespace cvn73100::sim
