// Blanking of everything that the agent has uploaded.
#pragma once

// Uploads thirteen empty values and zero counts. Returns 0.
int clearData();
