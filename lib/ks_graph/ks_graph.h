/// @file
/// Everything of the library.
#pragma once

#include <foundation/FileStream.h>
#include <ks_graph/GraphConnection.h>
#include <ks_graph/GraphLayout.h>
#include <ks_graph/GraphNodeBase.h>
#include <ks_graph/GraphNodePin.h>
#include <ks_graph/GraphScene.h>
#include <ks_graph/GraphSettings.h>
#include <ks_graph/Message.h>
#include <ks_graph/PlainNames.h>
