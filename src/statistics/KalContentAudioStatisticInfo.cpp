#include "tessel/KalContentAudioStatisticInfo.h"

KalContentAudioStatisticInfo::~KalContentAudioStatisticInfo() = default;
