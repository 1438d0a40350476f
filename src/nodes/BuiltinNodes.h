#pragma once

class CNodeFactory;

// Registers every built-in node type, in catalogue order.
void RegisterBuiltinNodes(CNodeFactory &factory);
// Makes RegisterBuiltinNodes the factory's built-in registrar.
void InstallBuiltinNodes();
