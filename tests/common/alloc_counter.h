// Counts every allocation made through operator new in the test program.
#pragma once

long allocationCount();
