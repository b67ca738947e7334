#include "app/run/disc_at_hand.h"

#include <vector>

#include "modules/disc_facts.h"

namespace ts5 {

artworker::DiscFacts DiscAtHand(const Job& job, const Jobs& jobs) {
  std::vector<const Job*> all;
  for (std::size_t number = 0; number <= jobs.Count(); ++number) all.push_back(&jobs[number]);
  return FactsOfDisc(job, all, DiscReading::AtHand);
}

}  // namespace ts5
