#include "connectkit/DataReport.h"

TransferDataReportClass* TransferDataReportClass::GetInstance() {
    static TransferDataReportClass tranferDataReport;
    return &tranferDataReport;
}

TransferDataReportClass::TransferDataReportClass() = default;
TransferDataReportClass::TransferDataReportClass(const TransferDataReportClass&) = default;
TransferDataReportClass& TransferDataReportClass::operator=(const TransferDataReportClass&) =
    default;
TransferDataReportClass::~TransferDataReportClass() = default;
