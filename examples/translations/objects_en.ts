<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name></name>
    <message id="chair-lina.name">
        <source></source>
        <translation>Lina chair</translation>
    </message>
    <message id="chair-lina.description">
        <source></source>
        <translation>A dining chair of solid oak with three slats in its back.</translation>
    </message>
    <message id="chair-freischwinger.name">
        <source></source>
        <translation>Cantilever chair</translation>
    </message>
    <message id="chair-freischwinger.description">
        <source></source>
        <translation>One bent steel tube, two panels of black leather and no rear legs.</translation>
    </message>
    <message id="chair-orbit.name">
        <source></source>
        <translation>Orbit swivel chair</translation>
    </message>
    <message id="chair-orbit.description">
        <source></source>
        <translation>An office chair with armrests on five castors, covered in grey wool.</translation>
    </message>
    <message id="armchair-nora.name">
        <source></source>
        <translation>Nora armchair</translation>
    </message>
    <message id="armchair-nora.description">
        <source></source>
        <translation>A round armchair in light, knotty wool. Ask for it on a rainy evening.</translation>
    </message>
    <message id="armchair-club.name">
        <source></source>
        <translation>Club armchair</translation>
    </message>
    <message id="armchair-club.description">
        <source></source>
        <translation>Deep, heavy and buttoned: brown leather as in an old library.</translation>
    </message>
    <message id="sofa-hygge.name">
        <source></source>
        <translation>Hygge sofa</translation>
    </message>
    <message id="sofa-hygge.description">
        <source></source>
        <translation>Three seats in blue-grey linen, with two loose cushions.</translation>
    </message>
    <message id="sofa-mila.name">
        <source></source>
        <translation>Mila corner sofa</translation>
    </message>
    <message id="sofa-mila.description">
        <source></source>
        <translation>A green sofa with a long seat on the right to put the feet up.</translation>
    </message>
    <message id="stool-milk.name">
        <source></source>
        <translation>Milking stool</translation>
    </message>
    <message id="stool-milk.description">
        <source></source>
        <translation>Three legs stand firm on any floor.</translation>
    </message>
    <message id="bench-garden.name">
        <source></source>
        <translation>Garden bench</translation>
    </message>
    <message id="bench-garden.description">
        <source></source>
        <translation>Weathered slats on two frames, at home under a tree and not in a living room.</translation>
    </message>
    <message id="table-alva.name">
        <source></source>
        <translation>Alva dining table</translation>
    </message>
    <message id="table-alva.description">
        <source></source>
        <translation>Walnut for six people, with room for the vase.</translation>
    </message>
    <message id="table-disc.name">
        <source></source>
        <translation>Disc side table</translation>
    </message>
    <message id="table-disc.description">
        <source></source>
        <translation>A marble disc on a brass column, just large enough for a cup.</translation>
    </message>
    <message id="desk-studio.name">
        <source></source>
        <translation>Studio desk</translation>
    </message>
    <message id="desk-studio.description">
        <source></source>
        <translation>An oak top on steel trestles, one drawer, a screen and pens.</translation>
    </message>
    <message id="shelf-ladder.name">
        <source></source>
        <translation>Ladder shelf</translation>
    </message>
    <message id="shelf-ladder.description">
        <source></source>
        <translation>Four boards between two ladders, filled with books and a plant.</translation>
    </message>
    <message id="cupboard-solveig.name">
        <source></source>
        <translation>Solveig cupboard</translation>
    </message>
    <message id="cupboard-solveig.description">
        <source></source>
        <translation>Two walnut doors with brass knobs.</translation>
    </message>
    <message id="chest-ida.name">
        <source></source>
        <translation>Ida chest of drawers</translation>
    </message>
    <message id="chest-ida.description">
        <source></source>
        <translation>Three white drawers under an oak top.</translation>
    </message>
    <message id="lamp-arc.name">
        <source></source>
        <translation>Arc floor lamp</translation>
    </message>
    <message id="lamp-arc.description">
        <source></source>
        <translation>A brass bow on a marble foot reaches over the armchair.</translation>
    </message>
    <message id="lamp-globe.name">
        <source></source>
        <translation>Globe pendant</translation>
    </message>
    <message id="lamp-globe.description">
        <source></source>
        <translation>A globe of milk glass that lights a whole table evenly.</translation>
    </message>
    <message id="lantern-paper.name">
        <source></source>
        <translation>Paper lantern</translation>
    </message>
    <message id="lantern-paper.description">
        <source></source>
        <translation>Thin paper over hoops of bamboo, with a soft light.</translation>
    </message>
    <message id="lamp-elbow.name">
        <source></source>
        <translation>Elbow desk lamp</translation>
    </message>
    <message id="lamp-elbow.description">
        <source></source>
        <translation>Two joints and a red shade, to be pulled where the light is wanted.</translation>
    </message>
    <message id="plant-monstera.name">
        <source></source>
        <translation>Monstera</translation>
    </message>
    <message id="plant-monstera.description">
        <source></source>
        <translation>Large slit leaves in a white pot.</translation>
    </message>
    <message id="plant-cactus.name">
        <source></source>
        <translation>Flowering cactus</translation>
    </message>
    <message id="plant-cactus.description">
        <source></source>
        <translation>Needs a sunny window and hardly any water.</translation>
    </message>
    <message id="plant-fern.name">
        <source></source>
        <translation>Fern</translation>
    </message>
    <message id="plant-fern.description">
        <source></source>
        <translation>Fine fronds for a shady corner.</translation>
    </message>
    <message id="tree-birch.name">
        <source></source>
        <translation>Birch</translation>
    </message>
    <message id="tree-birch.description">
        <source></source>
        <translation>A young birch with a white trunk.</translation>
    </message>
    <message id="tree-olive.name">
        <source></source>
        <translation>Olive tree</translation>
    </message>
    <message id="tree-olive.description">
        <source></source>
        <translation>An old, twisted trunk and silver leaves.</translation>
    </message>
</context>
</TS>
