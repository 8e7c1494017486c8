// Puts the page together: the place in the address first, then the views, then the link.

import { followBoard } from "./board.js";
import { startChanges } from "./changes.js";
import { startConfigurations } from "./configurations.js";
import { startCurves } from "./curves.js";
import { startDiagram } from "./diagram.js";
import { startInspector } from "./inspector.js";
import { startMeasures } from "./measures.js";
import { startPicture } from "./picture.js";
import { startPlace } from "./place.js";
import { startShell } from "./shell.js";
import { startTiming } from "./timing.js";
import { startTree } from "./tree.js";
import { startWorld } from "./world.js";
import { startWrites } from "./writes.js";

startPlace();
startShell();
startTree();
startInspector();
startChanges();
startMeasures();
startCurves();
startDiagram();
startTiming();
startWrites();
startConfigurations();
startWorld();
startPicture(followBoard());
