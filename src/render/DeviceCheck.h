#pragma once
// One pattern for creating device objects: the creating expression is
// written so that it is true on failure, and a failure logs
//   FAILED : "<expression>" in "<source path>"(<line>)
// so that the log names the exact call that the device refused.
//
//   if (DEVICE_FAILED(!(dObjs->m_IndexBuffer = render->CreateIndexBuffer(n, 0)))) return false;

// Logs the report and returns true. `file` is a compiler path; the report
// shows it relative to the source root, without extension, with backslashes.
bool ReportDeviceFailure(const char *expression, const char *file, long line);

#define DEVICE_FAILED(expression) ((expression) ? ReportDeviceFailure(#expression, __FILE__, __LINE__) : false)
