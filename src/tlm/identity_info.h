// The feeder tool's document about the clients: how many streams each identity has started.
#pragma once

// Prints the document, or nothing when the service counts no identities.
void print_identity_info();
