#pragma once

namespace ZR::benchmarks {

// One function a subsystem: each registers the comparisons of its public operations.
void compareInputsAndOutputs();
void compareDimmableDevices();
void compareFeatureDetection();
void compareLoading();
void compareCan();
void compareNotifications();
void compareEndPoints();

}  // namespace ZR::benchmarks
