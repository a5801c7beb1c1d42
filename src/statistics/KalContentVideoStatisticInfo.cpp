#include "tessel/KalContentVideoStatisticInfo.h"

KalContentVideoStatisticInfo::~KalContentVideoStatisticInfo() = default;
