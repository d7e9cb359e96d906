// SPDX-License-Identifier: MIT
// The program whose precompiled headers all test programs use; it has no test of its own.
