#pragma once

#include "snapshot_tool/command.h"

// metrics [-o FILE] [FILE]: the device's figures in the text format of Prometheus.
command_function metrics;
