#include "orvane/report/report_coding.h"

namespace orvane {

ORVANE_JSON_FORM(ReportFileInfo);
ORVANE_JSON_FORM(LoudnessCurvePoint);
ORVANE_JSON_FORM(LoudnessSample);
ORVANE_JSON_FORM(ReportFullFileLoudness);
ORVANE_JSON_FORM(ReportSelectionLoudness);
ORVANE_JSON_FORM(StereoWidthCurvePoint);
ORVANE_JSON_FORM(StereoWidthSample);
ORVANE_JSON_FORM(ReportStereoWidth);
ORVANE_JSON_FORM(ReportChannel);
ORVANE_JSON_FORM(ReportTimeRange);
ORVANE_JSON_FORM(ReportViolations);
ORVANE_JSON_FORM(ReportTargetVerdict);
ORVANE_JSON_FORM(ReportLoudnessTargetItem);
ORVANE_JSON_FORM(ReportLoudnessTargets);
ORVANE_JSON_FORM(ReportChapterEntry);
ORVANE_JSON_FORM(ReportChapterTable);
ORVANE_JSON_FORM(OrvaneReport);

}  // namespace orvane
