// SPDX-License-Identifier: MIT
#pragma once

/// What assistive technology learns of the widgets of our own beyond what the toolkit says of them:
/// the links in a notice, whether the triangle is expanded, and that a request runs. Once, after
/// the application is made. Main thread only.
void installAccessibleWidgets();
