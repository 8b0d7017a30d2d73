#include "connectkit/DataReport.h"

TransferDataReportClass* TransferDataReportClass::GetInstance() {
    static TransferDataReportClass tranferDataReport;
    return &tranferDataReport;
}

TransferDataReportClass::TransferDataReportClass() : startMilliSecond_(0) {}
TransferDataReportClass::TransferDataReportClass(const TransferDataReportClass&) = default;
TransferDataReportClass& TransferDataReportClass::operator=(const TransferDataReportClass&) =
    default;
TransferDataReportClass::~TransferDataReportClass() = default;
