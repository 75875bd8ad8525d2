// The peer libraries this build found.
#include "cases.h"

namespace vrkperf {

void addPeerCases([[maybe_unused]] Document &document) {
#ifdef VRKXML_PERF_PUGIXML
    addPugixmlCases(document);
#endif
#ifdef VRKXML_PERF_LIBXML2
    addLibxml2Cases(document);
#endif
#ifdef VRKXML_PERF_EXPAT
    addExpatCases(document);
#endif
#ifdef VRKXML_PERF_TINYXML2
    addTinyxml2Cases(document);
#endif
#ifdef VRKXML_PERF_XERCES
    addXercesCases(document);
#endif
}

void startPeers() {
#ifdef VRKXML_PERF_LIBXML2
    startLibxml2();
#endif
#ifdef VRKXML_PERF_XERCES
    startXerces();
#endif
}

void stopPeers() {
#ifdef VRKXML_PERF_XERCES
    stopXerces();
#endif
#ifdef VRKXML_PERF_LIBXML2
    stopLibxml2();
#endif
}

}  // namespace vrkperf
