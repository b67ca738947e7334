// The filters of this build: the one place that knows all rooms.
#pragma once
